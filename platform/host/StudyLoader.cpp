#include "platform/host/StudyLoader.h"

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <sstream>

#include <nlohmann/json.hpp>

#include "platform/host/FixturePictures.h"

namespace fs = std::filesystem;
using Json = nlohmann::json;

StudyFileError::StudyFileError(std::string file, std::string field, std::string problem)
    : std::runtime_error(file + ": " + (field.empty() ? std::string() : field + ": ") + problem),
      m_file(std::move(file)),
      m_field(std::move(field)),
      m_problem(std::move(problem)) {}

namespace {

std::string Member(const std::string& path, const std::string& key) {
  return path.empty() ? key : path + "." + key;
}

std::string Element(const std::string& path, std::size_t index) {
  return path + "[" + std::to_string(index) + "]";
}

const char* KindName(const Json& j) {
  switch (j.type()) {
    case Json::value_t::null: return "null";
    case Json::value_t::object: return "an object";
    case Json::value_t::array: return "an array";
    case Json::value_t::string: return "a string";
    case Json::value_t::boolean: return "a boolean";
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
    case Json::value_t::number_float: return "a number";
    default: return "something else";
  }
}

// Walks the document and turns every fault into a StudyFileError naming its field.
class Reader {
public:
  Reader(std::string source, fs::path base) : m_source(std::move(source)), m_base(std::move(base)) {}

  [[noreturn]] void Fail(const std::string& field, const std::string& problem) const {
    throw StudyFileError(m_source, field, problem);
  }

  // An object whose keys all stand in `known`; keys beginning with "_" are remarks and ignored.
  const Json& Object(const Json& j, const std::string& path,
                     std::initializer_list<const char*> known) const {
    if (!j.is_object()) Fail(path.empty() ? "(top level)" : path, std::string("expected an object, found ") + KindName(j));
    for (auto it = j.begin(); it != j.end(); ++it) {
      const std::string& key = it.key();
      if (!key.empty() && key[0] == '_') continue;
      bool ok = false;
      for (const char* k : known) ok = ok || key == k;
      if (!ok) {
        std::string list;
        for (const char* k : known) list += (list.empty() ? "" : ", ") + std::string(k);
        Fail(Member(path, key), "unknown field (known here: " + list + ")");
      }
    }
    return j;
  }

  static const Json* Find(const Json& object, const char* key) {
    auto it = object.find(key);
    return it == object.end() ? nullptr : &*it;
  }

  const Json& Required(const Json& object, const std::string& path, const char* key) const {
    const Json* j = Find(object, key);
    if (!j) Fail(Member(path, key), "missing");
    return *j;
  }

  CString String(const Json& j, const std::string& field) const {
    if (!j.is_string()) Fail(field, std::string("expected a string, found ") + KindName(j));
    return FromUtf8(j.get_ref<const std::string&>());
  }

  CString Text(const Json& object, const std::string& path, const char* key, bool required,
               const CString& fallback = CString()) const {
    const Json* j = Find(object, key);
    if (!j) {
      if (required) Fail(Member(path, key), "missing");
      return fallback;
    }
    return String(*j, Member(path, key));
  }

  int Integer(const Json& object, const std::string& path, const char* key, int low, int high,
              bool required, int fallback = 0) const {
    const Json* j = Find(object, key);
    std::string field = Member(path, key);
    if (!j) {
      if (required) Fail(field, "missing");
      return fallback;
    }
    if (!j->is_number_integer())
      Fail(field, std::string("expected a whole number, found ") + KindName(*j));
    long long v = j->get<long long>();
    if (v < low || v > high)
      Fail(field, "expected a number from " + std::to_string(low) + " to " + std::to_string(high) +
                      ", found " + std::to_string(v));
    return static_cast<int>(v);
  }

  bool Boolean(const Json& object, const std::string& path, const char* key, bool fallback) const {
    const Json* j = Find(object, key);
    if (!j) return fallback;
    if (!j->is_boolean()) Fail(Member(path, key), std::string("expected true or false, found ") + KindName(*j));
    return j->get<bool>();
  }

  // An array of strings; exactly `count` of them unless count is negative.
  std::vector<CString> Strings(const Json& j, const std::string& field, int count = -1) const {
    std::string expected = count < 0 ? "an array of strings"
                                     : "an array of " + std::to_string(count) + " strings";
    if (!j.is_array()) Fail(field, "expected " + expected + ", found " + KindName(j));
    if (count >= 0 && j.size() != static_cast<std::size_t>(count))
      Fail(field, "expected " + expected + ", found " + std::to_string(j.size()));
    std::vector<CString> out;
    for (std::size_t i = 0; i < j.size(); ++i) out.push_back(String(j[i], Element(field, i)));
    return out;
  }

  std::vector<CString> OptionalStrings(const Json& object, const std::string& path, const char* key) const {
    const Json* j = Find(object, key);
    return j ? Strings(*j, Member(path, key)) : std::vector<CString>();
  }

  // An array of [label, value] pairs of strings.
  std::vector<FixturePair> Pairs(const Json& j, const std::string& field) const {
    if (!j.is_array())
      Fail(field, std::string("expected an array of [name, value] pairs, found ") + KindName(j));
    std::vector<FixturePair> out;
    for (std::size_t i = 0; i < j.size(); ++i) {
      const Json& p = j[i];
      std::string at = Element(field, i);
      if (!p.is_array() || p.size() != 2)
        Fail(at, std::string("expected a [name, value] pair, found ") +
                     (p.is_array() ? "an array of " + std::to_string(p.size()) : std::string(KindName(p))));
      out.emplace_back(String(p[0], Element(at, 0)), String(p[1], Element(at, 1)));
    }
    return out;
  }

  std::vector<FixturePair> OptionalPairs(const Json& object, const std::string& path, const char* key) const {
    const Json* j = Find(object, key);
    return j ? Pairs(*j, Member(path, key)) : std::vector<FixturePair>();
  }

  // A picture file named relative to the study file; its complete path.
  CString Picture(const Json& object, const std::string& path, const char* key, bool required) const {
    const Json* j = Find(object, key);
    std::string field = Member(path, key);
    if (!j) {
      if (required) Fail(field, "missing");
      return CString();
    }
    CString name = String(*j, field);
    if (name.IsEmpty()) Fail(field, "empty picture name");
    fs::path file = fs::path(FixtureNativePath(name));
    if (file.is_relative()) file = m_base / file;
    file = file.lexically_normal();
    std::error_code ec;
    if (!fs::is_regular_file(file, ec))
      Fail(field, "picture file \"" + name.ToUtf8() + "\" not found (looked for " + file.string() + ")");
    if (!IsFixturePicture(file.string()))
      Fail(field, "\"" + name.ToUtf8() + "\" is not a JPEG, PNG, BMP or GIF picture");
    return FromUtf8(file.string());
  }

private:
  std::string m_source;
  fs::path m_base;
};

void ReadModel(const Reader& r, const Json& root, StudyData& d) {
  const Json& model = r.Object(r.Required(root, "", "model"), "model", {"name", "configuration", "picture"});
  d.modelName = r.Text(model, "model", "name", true);
  if (d.modelName.IsEmpty()) r.Fail("model.name", "empty");
  d.configuration = r.Text(model, "model", "configuration", false, u"Default");
  d.modelPicture = r.Picture(model, "model", "picture", true);
}

void ReadStudy(const Reader& r, const Json& root, StudyData& d) {
  const Json& study = r.Object(r.Required(root, "", "study"), "study",
                               {"name", "type", "typeText", "modelKind", "twoDPlane",
                                "analysedPicture", "loadCases", "resultFilesPath", "wizardState"});
  d.studyName = r.Text(study, "study", "name", true);
  if (d.studyName.IsEmpty()) r.Fail("study.name", "empty");
  d.studyType = r.Integer(study, "study", "type", 0, 9, true);
  d.studyTypeText = r.Text(study, "study", "typeText", true);
  d.modelKind = r.Integer(study, "study", "modelKind", 0, 1000, false, 0);
  d.twoDPlane = r.Boolean(study, "study", "twoDPlane", false) ? 1 : 0;
  d.analysedPicture = r.Picture(study, "study", "analysedPicture", false);
  d.loadCases = r.OptionalStrings(study, "study", "loadCases");
  for (std::size_t i = 0; i < d.loadCases.size(); ++i)
    if (d.loadCases[i].IsEmpty()) r.Fail(Element("study.loadCases", i), "empty load case name");
  d.resultFilesPath = r.Text(study, "study", "resultFilesPath", false);
  d.wizardState = r.Integer(study, "study", "wizardState", 0, 1000, false, 0);
}

void ReadProperties(const Reader& r, const Json& root, StudyData& d) {
  const Json* j = Reader::Find(root, "properties");
  if (!j) return;
  const char* p = "properties";
  r.Object(*j, p, {"study", "setupHeading", "setup", "resultOptions"});
  d.properties = r.OptionalPairs(*j, p, "study");
  d.setupHeading = r.Text(*j, p, "setupHeading", false);
  d.setup = r.OptionalPairs(*j, p, "setup");
  d.resultOptions = r.OptionalPairs(*j, p, "resultOptions");
  // A static study's set-up list starts with its heading.
  if (d.studyType == 0 && !d.setup.empty() && !Reader::Find(*j, "setupHeading"))
    r.Fail("properties.setupHeading", "missing: a static study with set-up rows needs the heading of its set-up table");
}

FixtureBodyKind ReadBodyKind(const Reader& r, const Json& bodies, const std::string& path, const char* key) {
  FixtureBodyKind kind;
  const Json* j = Reader::Find(bodies, key);
  if (!j) return kind;
  std::string at = Member(path, key);
  r.Object(*j, at, {"headings", "bodies"});
  kind.headings = r.Strings(r.Required(*j, at, "headings"), Member(at, "headings"), 4);
  const Json& list = r.Required(*j, at, "bodies");
  std::string listAt = Member(at, "bodies");
  if (!list.is_array()) r.Fail(listAt, std::string("expected an array of bodies, found ") + KindName(list));
  for (std::size_t i = 0; i < list.size(); ++i) {
    std::string bodyAt = Element(listAt, i);
    r.Object(list[i], bodyAt, {"values", "picture"});
    FixtureBody body;
    body.values = r.Strings(r.Required(list[i], bodyAt, "values"), Member(bodyAt, "values"), 4);
    body.picture = r.Picture(list[i], bodyAt, "picture", false);
    kind.bodies.push_back(std::move(body));
  }
  return kind;
}

void ReadBodies(const Reader& r, const Json& root, StudyData& d) {
  const Json* j = Reader::Find(root, "bodies");
  if (!j) return;
  const std::string p = "bodies";
  r.Object(*j, p, {"solids", "shells", "composites", "beams"});
  d.solids = ReadBodyKind(r, *j, p, "solids");
  d.shells = ReadBodyKind(r, *j, p, "shells");
  d.beams = ReadBodyKind(r, *j, p, "beams");

  const Json* c = Reader::Find(*j, "composites");
  if (!c) return;
  const std::string cp = "bodies.composites";
  r.Object(*c, cp, {"headings", "plyHeadings", "bodies"});
  d.composites.headings = r.Strings(r.Required(*c, cp, "headings"), cp + ".headings", 2);
  d.composites.plyHeadings = r.Strings(r.Required(*c, cp, "plyHeadings"), cp + ".plyHeadings", 8);
  const Json& list = r.Required(*c, cp, "bodies");
  const std::string listAt = cp + ".bodies";
  if (!list.is_array()) r.Fail(listAt, std::string("expected an array of bodies, found ") + KindName(list));
  if (list.size() > static_cast<std::size_t>(kMaxCompositeBodies))
    r.Fail(listAt, "at most " + std::to_string(kMaxCompositeBodies) + " composite bodies, found " +
                       std::to_string(list.size()));
  for (std::size_t i = 0; i < list.size(); ++i) {
    std::string bodyAt = Element(listAt, i);
    r.Object(list[i], bodyAt, {"values", "picture", "plies"});
    FixtureComposite body;
    body.values = r.Strings(r.Required(list[i], bodyAt, "values"), Member(bodyAt, "values"), 7);
    body.picture = r.Picture(list[i], bodyAt, "picture", false);
    if (const Json* plies = Reader::Find(list[i], "plies")) {
      std::string pliesAt = Member(bodyAt, "plies");
      if (!plies->is_array()) r.Fail(pliesAt, std::string("expected an array of plies, found ") + KindName(*plies));
      for (std::size_t k = 0; k < plies->size(); ++k)
        body.plies.push_back(r.Strings((*plies)[k], Element(pliesAt, k), 8));
    }
    d.composites.bodies.push_back(std::move(body));
  }
}

void ReadMaterials(const Reader& r, const Json& root, StudyData& d) {
  const Json* j = Reader::Find(root, "materials");
  if (!j) return;
  if (!j->is_array()) r.Fail("materials", std::string("expected an array of materials, found ") + KindName(*j));
  for (std::size_t i = 0; i < j->size(); ++i) {
    const Json& m = (*j)[i];
    std::string at = Element("materials", i);
    r.Object(m, at, {"name", "picture", "bodies", "properties", "curves"});
    FixtureMaterialData material;
    material.name = r.Text(m, at, "name", true);
    if (material.name.IsEmpty()) r.Fail(Member(at, "name"), "empty");
    material.picture = r.Picture(m, at, "picture", false);
    material.bodies = r.OptionalStrings(m, at, "bodies");
    material.properties = r.OptionalPairs(m, at, "properties");
    if (const Json* curves = Reader::Find(m, "curves")) {
      std::string curvesAt = Member(at, "curves");
      if (!curves->is_array())
        r.Fail(curvesAt, std::string("expected an array of curves, found ") + KindName(*curves));
      for (std::size_t k = 0; k < curves->size(); ++k) {
        std::string curveAt = Element(curvesAt, k);
        r.Object((*curves)[k], curveAt, {"label", "picture"});
        FixtureCurve curve;
        curve.label = r.Text((*curves)[k], curveAt, "label", true);
        curve.picture = r.Picture((*curves)[k], curveAt, "picture", true);
        material.curves.push_back(std::move(curve));
      }
    }
    d.materials.push_back(std::move(material));
  }
}

FixtureForces ReadForces(const Reader& r, const Json& object, const std::string& path, const char* key) {
  FixtureForces forces;
  const Json* j = Reader::Find(object, key);
  if (!j) return forces;
  std::string at = Member(path, key);
  r.Object(*j, at, {"forces", "moments"});
  forces.present = true;
  forces.forces = r.Strings(r.Required(*j, at, "forces"), Member(at, "forces"), 5);
  forces.moments = r.Strings(r.Required(*j, at, "moments"), Member(at, "moments"), 5);
  return forces;
}

void ReadResultantForces(const Reader& r, const Json& root, StudyData& d) {
  const Json* j = Reader::Find(root, "resultantForces");
  if (!j) return;
  r.Object(*j, "resultantForces", {"reaction", "freeBody"});
  d.reactionForces = ReadForces(r, *j, "resultantForces", "reaction");
  d.freeBodyForces = ReadForces(r, *j, "resultantForces", "freeBody");
}

int SectionKind(const Reader& r, const Json& j, const std::string& field) {
  CString name = r.String(j, field);
  int kind = FixtureSectionKind(name.ToUtf8());
  if (kind < 0) r.Fail(field, "unknown section \"" + name.ToUtf8() + "\"");
  return kind;
}

void ReadImages(const Reader& r, const Json& root, StudyData& d) {
  const Json* j = Reader::Find(root, "images");
  if (!j) return;
  if (!j->is_array()) r.Fail("images", std::string("expected an array of images, found ") + KindName(*j));
  for (std::size_t i = 0; i < j->size(); ++i) {
    const Json& m = (*j)[i];
    std::string at = Element("images", i);
    r.Object(m, at, {"name", "picture", "section", "sectionName", "caption", "captionOn", "comment", "commentOn"});
    FixtureImage image;
    image.name = r.Text(m, at, "name", true);
    if (image.name.IsEmpty()) r.Fail(Member(at, "name"), "empty");
    for (const FixtureImage& other : d.images)
      if (other.name == image.name) r.Fail(Member(at, "name"), "\"" + image.name.ToUtf8() + "\" is used by an earlier image");
    image.picture = r.Picture(m, at, "picture", true);
    image.sectionId = SectionKind(r, r.Required(m, at, "section"), Member(at, "section"));
    image.sectionName = r.Text(m, at, "sectionName", false);
    image.caption = r.Text(m, at, "caption", false);
    image.captionOn = r.Boolean(m, at, "captionOn", Reader::Find(m, "caption") != nullptr) ? 1 : 0;
    image.comment = r.Text(m, at, "comment", false);
    image.commentOn = r.Boolean(m, at, "commentOn", Reader::Find(m, "comment") != nullptr) ? 1 : 0;
    d.images.push_back(std::move(image));
  }
}

void ReadReport(const Reader& r, const Json& root, StudyData& d) {
  const Json* j = Reader::Find(root, "report");
  if (!j) return;
  r.Object(*j, "report", {"description", "comments", "exclude"});
  d.description = r.Text(*j, "report", "description", false);
  if (const Json* comments = Reader::Find(*j, "comments")) {
    if (!comments->is_object())
      r.Fail("report.comments", std::string("expected an object of section names and texts, found ") + KindName(*comments));
    for (auto it = comments->begin(); it != comments->end(); ++it) {
      std::string field = "report.comments." + it.key();
      int kind = FixtureSectionKind(it.key());
      if (kind <= 0) r.Fail(field, "unknown section (the description has no comment)");
      d.comments[kind] = r.String(it.value(), field);
    }
  }
  if (const Json* exclude = Reader::Find(*j, "exclude")) {
    if (!exclude->is_array())
      r.Fail("report.exclude", std::string("expected an array of section names, found ") + KindName(*exclude));
    for (size_t i = 0; i < exclude->size(); ++i) {
      d.excluded.insert(SectionKind(r, (*exclude)[i], "report.exclude[" + std::to_string(i) + "]"));
    }
  }
}

}  // namespace

StudyData ParseStudyData(const std::string& text, const std::string& baseFolder,
                         const std::string& sourceName) {
  Json root;
  try {
    root = Json::parse(text);
  } catch (const Json::parse_error& e) {
    std::string what = e.what();
    // "[json.exception.parse_error.101] parse error at line 3, column 5: ..." -> from "parse error".
    auto at = what.find("parse error");
    throw StudyFileError(sourceName, "", "not valid JSON: " + (at == std::string::npos ? what : what.substr(at)));
  }
  Reader r(sourceName, fs::path(baseFolder));
  r.Object(root, "", {"format", "model", "study", "properties", "units", "bodies", "materials",
                      "resultantForces", "images", "report"});
  int version = r.Integer(root, "", "format", 1, 1000000, false, kStudyFormatVersion);
  if (version != kStudyFormatVersion)
    r.Fail("format", "version " + std::to_string(version) + " is not known (this host reads version " +
                         std::to_string(kStudyFormatVersion) + ")");

  StudyData d;
  d.sourceFile = FromUtf8(sourceName);
  ReadModel(r, root, d);
  ReadStudy(r, root, d);
  ReadProperties(r, root, d);
  d.units = r.OptionalPairs(root, "", "units");
  ReadBodies(r, root, d);
  ReadMaterials(r, root, d);
  ReadResultantForces(r, root, d);
  ReadImages(r, root, d);
  ReadReport(r, root, d);
  return d;
}

StudyData ReadStudyData(const std::string& path) {
  std::string native = FixtureNativePath(FromUtf8(path));
  std::error_code ec;
  if (!fs::is_regular_file(native, ec)) throw StudyFileError(path, "", "no such study file");
  std::ifstream in(native, std::ios::binary);
  if (!in) throw StudyFileError(path, "", "the study file can't be read");
  std::ostringstream text;
  text << in.rdbuf();
  fs::path base = fs::absolute(fs::path(native), ec).parent_path();
  return ParseStudyData(text.str(), base.string(), path);
}

std::unique_ptr<FixtureStudy> LoadFixtureStudy(const std::string& path) {
  return std::make_unique<FixtureStudy>(ReadStudyData(path));
}

std::unique_ptr<FixtureStudy> LoadFixtureStudy(const CString& path) {
  return LoadFixtureStudy(path.ToUtf8());
}
