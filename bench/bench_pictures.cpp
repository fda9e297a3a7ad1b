// Pictures from file to saved document, each step on its own: a study's pictures checked when
// it is read, AddPicture (a JPEG kept as it is, a BMP made PNG), and the save that stores them.
// Each runs at two sizes: the cost of one picture must not depend on how many came before.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "bench/BenchKit.h"
#include "platform/docx/Picture.h"
#include "platform/host/fixture/StudyLoader.h"
#include "platform/word/Word.h"

namespace {

using Word::Variant;
namespace fs = std::filesystem;

std::string FileBytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// A folder of `count` JPEGs of 6 KB, each a file of its own (the sample's body picture with a
// comment segment that tells it apart), made once per size and process.
const fs::path& PictureFolder(int count) {
  static std::map<int, fs::path> made;
  auto it = made.find(count);
  if (it != made.end()) return it->second;
  const fs::path dir = fs::temp_directory_path() / ("zp_bench_pictures_" + std::to_string(::getpid()) + "_" +
                                                     std::to_string(count));
  fs::create_directories(dir);
  const std::string base = FileBytes(fs::path(ZP_SOURCE_DIR) / "examples/bracket/pictures/body-gusset.jpg");
  for (int n = 0; n < count; ++n) {
    const std::string text = "picture " + std::to_string(n);
    const std::size_t len = text.size() + 2;
    std::ofstream(dir / (std::to_string(n) + ".jpg"), std::ios::binary)
        << base.substr(0, 2) << "\xFF\xFE" << static_cast<char>(len >> 8) << static_cast<char>(len & 0xFF) << text
        << base.substr(2);
  }
  return made.emplace(count, dir).first->second;
}

std::string OnePageDocument() {
  return zpbench::WriteDocument(
      "pictures",
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?><w:document "
      "xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\"><w:body><w:p><w:r><w:t>Pictures</w:t>"
      "</w:r></w:p><w:sectPr/></w:body></w:document>");
}

Word::String W(const fs::path& p) {
  const std::string s = p.string();
  return Word::String(s.begin(), s.end());
}

// AddPicture of `count` different JPEGs, each in a paragraph of its own, as a report has them.
void BM_AddPictureJpeg(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  const fs::path& dir = PictureFolder(count);
  const std::string path = OnePageDocument();
  for (auto _ : state) {
    state.PauseTiming();
    {
      zpbench::OpenDocument o(path);
      auto shapes = o.sel->GetInlineShapes();
      state.ResumeTiming();
      for (int n = 0; n < count; ++n) {
        shapes->AddPicture(W(dir / (std::to_string(n) + ".jpg")));
        o.sel->TypeParagraph();
      }
      state.PauseTiming();
    }
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * count);
  std::remove(path.c_str());
}
BENCHMARK(BM_AddPictureJpeg)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// The save of a document holding `count` JPEGs: stored as they are, XML streamed.
void BM_SavePictures(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  const fs::path& dir = PictureFolder(count);
  const std::string path = OnePageDocument();
  const std::string out = path + ".out.docx";
  zpbench::OpenDocument o(path);
  auto shapes = o.sel->GetInlineShapes();
  for (int n = 0; n < count; ++n) {
    shapes->AddPicture(W(dir / (std::to_string(n) + ".jpg")));
    o.sel->TypeParagraph();
  }
  auto doc = o.app->GetActiveDocument();
  for (auto _ : state) doc->SaveAs(Variant(Word::String(out.begin(), out.end())));
  state.SetItemsProcessed(state.iterations() * count);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fs::file_size(out)));
  std::remove(path.c_str());
  std::remove(out.c_str());
}
BENCHMARK(BM_SavePictures)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// A BMP of 640 x 480 (a captured view) made PNG through zlib.
void BM_BmpToPng(benchmark::State& state) {
  const int w = 640, h = 480;
  std::vector<unsigned char> pixels(static_cast<std::size_t>(w) * h * 3);
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>((i / 3) % w < 320 ? 255 : i % 7);
  std::size_t bytes = 0;
  for (auto _ : state) bytes = docx::EncodePng(pixels.data(), w, h, 3).size();
  state.counters["png_bytes"] = static_cast<double>(bytes);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(pixels.size()));
}
BENCHMARK(BM_BmpToPng)->Unit(benchmark::kMillisecond);

// Reading a study file of `count` bodies, each with its own picture, checked by its header.
void BM_ReadStudyWithPictures(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  const fs::path& dir = PictureFolder(count);
  std::string json = "{\"model\": {\"name\": \"M\", \"picture\": \"0.jpg\"}, \"study\": {\"name\": \"S\", \"type\": 0, "
                     "\"typeText\": \"Static\"}, \"bodies\": {\"solids\": {\"headings\": [\"a\", \"b\", \"c\", \"d\"], "
                     "\"bodies\": [";
  for (int n = 0; n < count; ++n)
    json += std::string(n ? "," : "") + "{\"values\": [\"Body " + std::to_string(n) +
            "\", \"Solid Body\", \"Mass:1 kg\", \"M.mdl\"], \"picture\": \"" + std::to_string(n) + ".jpg\"}";
  json += "]}}}";
  const fs::path study = dir / "study.json";
  std::ofstream(study) << json;
  for (auto _ : state) benchmark::DoNotOptimize(ReadStudyData(study.string()));
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_ReadStudyWithPictures)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// The folders of pictures go with the process.
struct Cleanup {
  ~Cleanup() {
    std::error_code ec;
    for (int count : {1000, 10000})
      fs::remove_all(fs::temp_directory_path() / ("zp_bench_pictures_" + std::to_string(::getpid()) + "_" +
                                                  std::to_string(count)),
                     ec);
  }
} g_cleanup;

}  // namespace
