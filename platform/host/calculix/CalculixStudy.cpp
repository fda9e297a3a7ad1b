#include "platform/host/calculix/CalculixStudy.h"

#include <filesystem>
#include <optional>

#include "platform/host/calculix/CcxBuild.h"
#include "platform/host/calculix/CcxDat.h"
#include "platform/host/calculix/CcxError.h"
#include "platform/host/calculix/CcxFrd.h"
#include "platform/system/FileHelpers.h"

namespace fs = std::filesystem;

namespace {

std::string LowerExtension(const fs::path& path) {
  std::string ext = path.extension().string();
  for (char& c : ext)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return ext;
}

// The file beside `path` with the same stem and the extension given in either letter case;
// empty when there is none.
fs::path Beside(const fs::path& path, const std::string& lowerExtension) {
  std::error_code ec;
  std::string upperExtension = lowerExtension;
  for (char& c : upperExtension) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  for (const std::string& ext : {lowerExtension, upperExtension}) {
    fs::path candidate = path;
    candidate.replace_extension(ext);
    if (fs::is_regular_file(candidate, ec)) return candidate;
  }
  return {};
}

// The study's own folder of pictures, removed with it.
class PictureFolder {
public:
  PictureFolder() : m_path(CreateScratchFolder()) {}
  ~PictureFolder() {
    if (!m_path.IsEmpty()) RemoveScratchFolder(m_path);
  }
  PictureFolder(const PictureFolder&) = delete;
  PictureFolder& operator=(const PictureFolder&) = delete;
  std::string Native() const { return NativePathUtf8(m_path); }
  bool Made() const { return !m_path.IsEmpty(); }

private:
  CString m_path;
};

class CalculixStudy : public FixtureStudy {
public:
  CalculixStudy(StudyData data, std::unique_ptr<PictureFolder> folder)
      : FixtureStudy(std::move(data)), m_folder(std::move(folder)) {}

private:
  std::unique_ptr<PictureFolder> m_folder;
};

}  // namespace

bool IsCalculixInput(const std::string& path) {
  const std::string ext = LowerExtension(fs::path(path));
  return ext == ".inp" || ext == ".frd";
}

std::unique_ptr<FixtureStudy> LoadCalculixStudy(const std::string& path, const CalculixOptions& options) {
  const fs::path given(path);
  const bool fromResults = LowerExtension(given) == ".frd";
  std::error_code ec;
  if (!fs::exists(given, ec)) throw CalculixInputError(path + ": the file does not exist");
  if (!fs::is_regular_file(given, ec)) throw CalculixInputError(path + ": is not a file");
  const fs::path deckPath = fromResults ? Beside(given, ".inp") : given;
  if (deckPath.empty())
    throw CalculixInputError(path + ": the deck it was solved from (" + given.stem().string() +
                             ".inp) is not beside it; the report needs the deck");
  const ccx::UnitSystem* units = ccx::FindUnitSystem(options.units);
  if (!units) {
    std::string known;
    for (const ccx::UnitSystem& u : ccx::UnitSystems()) known += (known.empty() ? "" : ", ") + u.key;
    throw CalculixInputError("--units: \"" + options.units + "\" is no unit system this host knows (" + known + ")");
  }

  ccx::Deck deck;
  try {
    deck = ccx::ReadDeck(deckPath.string());
  } catch (const ccx::DeckError& e) {
    throw CalculixInputError(e.what());
  }
  if (deck.mesh.ElementCount() == 0 && deck.mesh.NodeCount() == 0)
    throw CalculixInputError(deckPath.string() + ": the deck defines no nodes and no elements");

  StudyData data;
  data.sourceFile = CString(deckPath.string());
  // The results: the .frd and .dat of the same job.
  std::optional<ccx::FrdFile> frd;
  std::optional<ccx::DatFile> dat;
  const fs::path frdPath = fromResults ? given : Beside(deckPath, ".frd");
  const fs::path datPath = Beside(deckPath, ".dat");
  if (!frdPath.empty()) {
    try {
      frd = ccx::ReadFrd(frdPath.string());
    } catch (const ccx::ReadError& e) {
      if (fromResults) throw CalculixInputError(e.what());
      data.warnings.push_back(std::string(e.what()) + " (the report is made without its results)");
    }
    if (frd && fs::last_write_time(frdPath, ec) < fs::last_write_time(deckPath, ec) && !ec)
      data.warnings.push_back(frdPath.string() + ": is older than the deck; the results may not be this deck's");
  }
  if (!datPath.empty()) {
    try {
      dat = ccx::ReadDat(datPath.string());
    } catch (const ccx::ReadError& e) {
      data.warnings.push_back(std::string(e.what()) + " (its reaction forces and frequencies are left out)");
    }
  }

  auto folder = std::make_unique<PictureFolder>();
  if (!folder->Made()) throw CalculixInputError("no folder for the study's pictures could be made in " + NativePathUtf8(TempFolderPath()));
  data.modelName = CString(deckPath.stem().string());
  ccx::BuildContext context(deck, *units, options, folder->Native(), data);
  context.modelName = deckPath.stem().string();
  ccx::BuildModel(context);
  ccx::BuildResults(context, frd ? &*frd : nullptr, dat ? &*dat : nullptr);
  for (const std::string& failure : context.pictures->Failures()) data.warnings.push_back(failure);
  return std::make_unique<CalculixStudy>(std::move(data), std::move(folder));
}
