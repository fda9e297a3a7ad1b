#include "model/FormatsJson.h"

#include <functional>
#include <memory>
#include <set>
#include <vector>

#include "model/Options.h"
#include "model/Sections.h"

namespace {

using Json = nlohmann::json;

// Visits the named fields of an object, for writing them out or reading them in.
class Fields {
public:
  virtual ~Fields() = default;
  virtual void Int(const char* name, int& value) = 0;
  virtual void Text(const char* name, CString& value, int limit) = 0;
};

void HeaderFields(CZPReportHeaderInfo& h, Fields& f) {
  f.Int("logoOn", h.m_logoOn);
  f.Int("designerOn", h.m_designerOn);
  f.Int("companyOn", h.m_companyOn);
  f.Int("addressOn", h.m_addressOn);
  f.Int("phoneOn", h.m_phoneOn);
  f.Int("faxOn", h.m_faxOn);
  f.Int("emailOn", h.m_emailOn);
  f.Text("logoPath", h.m_logoPath, 260);
  f.Text("designer", h.m_designer, 50);
  f.Text("company", h.m_company, 50);
  f.Text("address1", h.m_address1, 100);
  f.Text("address2", h.m_address2, 100);
  f.Text("phone", h.m_phone, 20);
  f.Text("fax", h.m_fax, 20);
  f.Text("email", h.m_email, 50);
  f.Int("showOnPublish", h.m_showOnPublish);
  f.Int("publishOption", h.m_publishOption);
  f.Int("paperA4", h.m_headerChoice);
  f.Text("reportFolder", h.m_reportFolder, 32767);
}

void FormatFields(COVReportFormat& format, Fields& f) {
  f.Text("name", format.m_name, 32767);
  f.Text("formatText", format.m_formatText, 32767);
  f.Int("formatOption0", format.m_formatOption0);
  f.Int("outputType", format.m_outputType);
  f.Int("formatOption2", format.m_formatOption2);
  f.Int("formatOption3", format.m_formatOption3);
  f.Int("nextUserSection", format.m_nextUserSection);
}

// The fields of a section after its kind: those every section has, then its class's own.
void SectionFields(COVBaseReportSection& s, Fields& f) {
  f.Text("titleDefault", s.m_titleDefault, 32767);
  f.Text("title", s.m_title, 50);
  f.Int("included", s.m_included);
  f.Int("commentsOn", s.m_commentsOn);
  f.Text("comments", s.m_comments, 1000);
  f.Int("sectionId", s.m_sectionId);
  f.Int("sectionAux", s.m_sectionAux);
  if (auto* d = dynamic_cast<CZPNewReportSectionDescription*>(&s)) f.Text("description", d->m_description, 500);
  if (auto* m = dynamic_cast<CZPNewReportSectionModelInformation*>(&s)) {
    f.Int("modelOption0", m->m_modelOption0);
    f.Int("modelOption1", m->m_modelOption1);
    f.Int("modelOption2", m->m_modelOption2);
    f.Int("modelOption3", m->m_modelOption3);
    f.Int("modelOption4", m->m_modelOption4);
  }
  if (auto* p = dynamic_cast<CZPNewReportSectionStudyProperties*>(&s)) {
    f.Int("studyOption0", p->m_studyOption0);
    f.Int("studyOption1", p->m_studyOption1);
    f.Int("studyOption2", p->m_studyOption2);
    f.Int("studyOption3", p->m_studyOption3);
    f.Int("studyOption4", p->m_studyOption4);
  }
  if (auto* m = dynamic_cast<CZPNewReportSectionMaterialProperties*>(&s)) {
    f.Int("materialOption0", m->m_materialOption0);
    f.Int("materialOption1", m->m_materialOption1);
    f.Int("materialOption2", m->m_materialOption2);
    f.Int("materialOption3", m->m_materialOption3);
    f.Int("materialOption4", m->m_materialOption4);
    f.Int("materialOption5", m->m_materialOption5);
    f.Int("materialOption6", m->m_materialOption6);
    f.Int("materialOption7", m->m_materialOption7);
    f.Text("materialText", m->m_materialText, 32767);
  }
  if (auto* b = dynamic_cast<CZPNewReportSectionBeams*>(&s)) {
    f.Int("beamForces", b->m_beamForces);
    f.Int("beamForcesChoice", b->m_beamForcesChoice);
    f.Int("beamStresses", b->m_beamStresses);
    f.Int("beamStressesChoice", b->m_beamStressesChoice);
  }
  if (auto* r = dynamic_cast<CZPNewReportSectionStudyResults*>(&s)) {
    f.Int("resultOption", r->m_resultOption);
    f.Int("resultExtra", r->m_resultExtra);
  }
  if (auto* u = dynamic_cast<CZPNewReportSectionUser*>(&s)) {
    f.Int("insertExternal", u->m_insertExternal);
    f.Text("externalPath", u->m_externalPath, 32767);
    f.Int("linkToFile", u->m_linkToFile);
    f.Int("displayAsIcon", u->m_displayAsIcon);
  }
}

class Writer : public Fields {
public:
  explicit Writer(nlohmann::ordered_json& out) : m_out(out) {}
  void Int(const char* name, int& value) override { m_out[name] = value; }
  void Text(const char* name, CString& value, int) override { m_out[name] = value.ToUtf8(); }

private:
  nlohmann::ordered_json& m_out;
};

// Reads the fields an object has; a field it lacks keeps its value. Unknown fields, wrong
// types and over-long texts are errors naming the field.
class Reader : public Fields {
public:
  Reader(const Json& in, std::string at, std::set<std::string> alsoKnown = {})
      : m_in(in), m_at(std::move(at)), m_known(std::move(alsoKnown)) {
    if (!m_in.is_object()) Fail(m_at, "expected an object");
  }
  void Int(const char* name, int& value) override {
    m_known.insert(name);
    auto it = m_in.find(name);
    if (it == m_in.end()) return;
    if (!it->is_number_integer() || it->get<long long>() < INT32_MIN || it->get<long long>() > INT32_MAX)
      Fail(Field(name), "expected an integer");
    value = it->get<int>();
  }
  void Text(const char* name, CString& value, int limit) override {
    m_known.insert(name);
    auto it = m_in.find(name);
    if (it == m_in.end()) return;
    if (!it->is_string()) Fail(Field(name), "expected a string");
    CString text = FromUtf8(it->get<std::string>());
    if (text.GetLength() > limit) Fail(Field(name), "longer than the " + std::to_string(limit) + " characters it may have");
    value = text;
  }
  // After the visit: every field of the JSON object was one of the object's.
  void CheckAllKnown() const {
    for (auto it = m_in.begin(); it != m_in.end(); ++it)
      if (!m_known.count(it.key())) Fail(Field(it.key().c_str()), "unknown field");
  }
  [[noreturn]] static void Fail(const std::string& field, const std::string& problem) {
    throw FormatsJsonError(field + ": " + problem);
  }

private:
  std::string Field(const char* name) const { return m_at.empty() ? name : m_at + "." + name; }
  const Json& m_in;
  std::string m_at;
  std::set<std::string> m_known;
};

const Json& Member(const Json& object, const char* name, const std::string& at) {
  auto it = object.find(name);
  if (it == object.end()) Reader::Fail(at.empty() ? name : at + "." + name, "missing");
  return *it;
}

}  // namespace

nlohmann::ordered_json FormatsToJson(const CZPNewReportOptions& options) {
  nlohmann::ordered_json out;
  out["version"] = options.ArchiveVersion();
  nlohmann::ordered_json header = nlohmann::ordered_json::object();
  if (options.GetHeaderInfo()) {
    Writer w(header);
    HeaderFields(*options.GetHeaderInfo(), w);
  }
  out["header"] = header;
  nlohmann::ordered_json formats = nlohmann::ordered_json::array();
  for (COVReportFormat* format : options.GetFormats()) {
    if (!format) continue;
    nlohmann::ordered_json f;
    f["analysisType"] = format->GetAnalysisType();
    Writer w(f);
    FormatFields(*format, w);
    nlohmann::ordered_json sections = nlohmann::ordered_json::array();
    for (COVBaseReportSection* section : format->GetSections()) {
      if (!section) continue;
      nlohmann::ordered_json s;
      s["kind"] = section->m_sectionType;
      Writer sw(s);
      SectionFields(*section, sw);
      sections.push_back(std::move(s));
    }
    f["sections"] = std::move(sections);
    formats.push_back(std::move(f));
  }
  out["formats"] = std::move(formats);
  return out;
}

void FormatsFromJson(CZPNewReportOptions& options, const nlohmann::json& json) {
  Reader root(json, "", {"version", "header", "formats"});
  root.CheckAllKnown();
  // The header on a copy, taken over only when everything else reads too.
  CZPReportHeaderInfo header;
  if (options.GetHeaderInfo()) header = *options.GetHeaderInfo();
  if (json.contains("header")) {
    Reader r(json["header"], "header");
    HeaderFields(header, r);
    r.CheckAllKnown();
  }
  const Json& list = Member(json, "formats", "");
  if (!list.is_array()) Reader::Fail("formats", "expected an array");
  std::vector<std::unique_ptr<CZPNewReportFormat>> formats;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const std::string at = "formats[" + std::to_string(i) + "]";
    const Json& f = list[i];
    Reader r(f, at, {"analysisType", "sections"});
    int type = -1;
    {
      const Json& t = Member(f, "analysisType", at);
      if (!t.is_number_integer() || t.get<long long>() < -1 || t.get<long long>() > 100)
        Reader::Fail(at + ".analysisType", "expected a study type (-1 to 100)");
      type = t.get<int>();
    }
    auto format = std::make_unique<CZPNewReportFormat>(type);
    FormatFields(*format, r);
    r.CheckAllKnown();
    const Json& sections = Member(f, "sections", at);
    if (!sections.is_array()) Reader::Fail(at + ".sections", "expected an array");
    for (std::size_t k = 0; k < sections.size(); ++k) {
      const std::string sat = at + ".sections[" + std::to_string(k) + "]";
      const Json& s = sections[k];
      Reader sr(s, sat, {"kind"});
      const Json& kind = Member(s, "kind", sat);
      if (!kind.is_number_integer() || kind.get<long long>() < 0 || kind.get<long long>() > 18)
        Reader::Fail(sat + ".kind", "expected a section kind (0 to 18)");
      std::unique_ptr<CZPNewReportSection> section(CZPNewReportSection::CreateSection(kind.get<int>()));
      if (!section) Reader::Fail(sat + ".kind", "no section has kind " + std::to_string(kind.get<int>()));
      SectionFields(*section, sr);
      sr.CheckAllKnown();
      format->AddSection(section.release());
    }
    formats.push_back(std::move(format));
  }
  // Everything read: the options take it over.
  options.RemoveAllFormats();
  for (auto& format : formats) options.AddFormat(format.release());
  if (options.GetHeaderInfo()) *options.GetHeaderInfo() = header;
}
