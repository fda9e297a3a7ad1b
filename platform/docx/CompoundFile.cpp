#include "platform/docx/CompoundFile.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <stdexcept>

namespace docx {
namespace {

constexpr std::uint32_t kSector = 512, kMiniSector = 64, kMiniCutoff = 4096;
constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE, kFree = 0xFFFFFFFF, kFatSector = 0xFFFFFFFD,
                        kDifatSector = 0xFFFFFFFC, kNoStream = 0xFFFFFFFF;
constexpr unsigned char kSignature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};

void Put16(std::string& out, std::size_t at, std::uint16_t v) {
  out[at] = static_cast<char>(v & 0xFF);
  out[at + 1] = static_cast<char>(v >> 8);
}
void Put32(std::string& out, std::size_t at, std::uint32_t v) {
  for (int i = 0; i < 4; ++i) out[at + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
}
std::uint32_t Sectors(std::uint64_t bytes, std::uint32_t size) {
  return static_cast<std::uint32_t>((bytes + size - 1) / size);
}

// Directory order: shorter names first, then by upper-case code units.
bool NameLess(const std::u16string& a, const std::u16string& b) {
  if (a.size() != b.size()) return a.size() < b.size();
  auto up = [](char16_t c) { return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 32) : c; };
  for (std::size_t i = 0; i < a.size(); ++i)
    if (up(a[i]) != up(b[i])) return up(a[i]) < up(b[i]);
  return false;
}

struct Entry {
  std::u16string name;
  std::uint8_t type = 0;  // 2 stream, 5 root
  std::uint8_t colour = 1;  // 0 red, 1 black
  std::uint32_t left = kNoStream, right = kNoStream, child = kNoStream;
  ClassId clsid{};
  std::uint32_t start = kEndOfChain;
  std::uint64_t size = 0;
};

}  // namespace

bool IsCompoundFile(const std::string& bytes) {
  return bytes.size() >= kSector && std::memcmp(bytes.data(), kSignature, sizeof kSignature) == 0;
}

std::string BuildCompoundFile(const ClassId& rootClass, const std::vector<CompoundStream>& streams) {
  // Where each stream goes: small ones in the mini stream, the rest in sectors of their own.
  std::vector<std::uint32_t> miniStart(streams.size(), kEndOfChain), bigStart(streams.size(), kEndOfChain);
  std::uint32_t miniSectors = 0, bigSectors = 0;
  for (std::size_t i = 0; i < streams.size(); ++i) {
    if (streams[i].name.empty() || streams[i].name.size() > 31) throw std::invalid_argument("stream name length");
    const std::uint64_t size = streams[i].bytes.size();
    if (size > 0xFFFFFFFFull) throw std::invalid_argument("stream over 4 GiB");
    if (size == 0) continue;
    if (size < kMiniCutoff) {
      miniStart[i] = miniSectors;
      miniSectors += Sectors(size, kMiniSector);
    } else {
      bigStart[i] = bigSectors;
      bigSectors += Sectors(size, kSector);
    }
  }
  const std::uint32_t miniStreamSectors = Sectors(std::uint64_t{miniSectors} * kMiniSector, kSector);
  const std::uint32_t miniFatSectors = Sectors(std::uint64_t{miniSectors} * 4, kSector);
  const std::uint32_t dirSectors = Sectors((streams.size() + 1) * 128ull, kSector);
  const std::uint32_t data = dirSectors + miniFatSectors + miniStreamSectors + bigSectors;
  // The FAT covers itself and the DIFAT sectors too.
  std::uint32_t fat = 1, difat = 0;
  for (;;) {
    const std::uint32_t total = data + fat + difat;
    const std::uint32_t needFat = Sectors(std::uint64_t{total} * 4, kSector);
    const std::uint32_t needDifat = needFat > 109 ? Sectors(needFat - 109, 127) : 0;
    if (needFat == fat && needDifat == difat) break;
    fat = needFat;
    difat = needDifat;
  }
  // Sector numbers of each region, in file order.
  const std::uint32_t fatAt = 0, difatAt = fat, dirAt = difatAt + difat, miniFatAt = dirAt + dirSectors,
                      miniStreamAt = miniFatAt + miniFatSectors, bigAt = miniStreamAt + miniStreamSectors;
  const std::uint32_t total = bigAt + bigSectors;

  std::string out(std::uint64_t{kSector} * (total + 1), '\0');
  auto sector = [&](std::uint32_t n) { return std::uint64_t{kSector} * (n + 1); };

  // FAT: each region a chain of its own.
  std::vector<std::uint32_t> fatTable(std::uint64_t{fat} * 128, kFree);
  for (std::uint32_t i = 0; i < fat; ++i) fatTable[fatAt + i] = kFatSector;
  for (std::uint32_t i = 0; i < difat; ++i) fatTable[difatAt + i] = kDifatSector;
  auto chain = [&](std::uint32_t first, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) fatTable[first + i] = i + 1 < count ? first + i + 1 : kEndOfChain;
  };
  chain(dirAt, dirSectors);
  chain(miniFatAt, miniFatSectors);
  chain(miniStreamAt, miniStreamSectors);
  for (std::size_t i = 0; i < streams.size(); ++i)
    if (bigStart[i] != kEndOfChain) chain(bigAt + bigStart[i], Sectors(streams[i].bytes.size(), kSector));
  for (std::uint32_t i = 0; i < fatTable.size(); ++i) Put32(out, sector(fatAt) + 4ull * i, fatTable[i]);

  // Mini FAT and the mini stream; the big streams.
  std::vector<std::uint32_t> miniFat(std::uint64_t{miniFatSectors} * 128, kFree);
  for (std::size_t i = 0; i < streams.size(); ++i) {
    const std::string& bytes = streams[i].bytes;
    if (miniStart[i] != kEndOfChain) {
      const std::uint32_t n = Sectors(bytes.size(), kMiniSector);
      for (std::uint32_t k = 0; k < n; ++k) miniFat[miniStart[i] + k] = k + 1 < n ? miniStart[i] + k + 1 : kEndOfChain;
      std::memcpy(&out[sector(miniStreamAt) + std::uint64_t{miniStart[i]} * kMiniSector], bytes.data(), bytes.size());
    } else if (bigStart[i] != kEndOfChain) {
      std::memcpy(&out[sector(bigAt + bigStart[i])], bytes.data(), bytes.size());
    }
  }
  for (std::uint32_t i = 0; i < miniFat.size(); ++i) Put32(out, sector(miniFatAt) + 4ull * i, miniFat[i]);

  // Directory: the root, then the streams as a balanced tree by name order. Nodes on the
  // lowest level of an unfilled tree are red, all others black.
  std::vector<Entry> entries(1 + streams.size());
  entries[0].name = u"Root Entry";
  entries[0].type = 5;
  entries[0].clsid = rootClass;
  entries[0].start = miniSectors ? miniStreamAt : kEndOfChain;
  entries[0].size = std::uint64_t{miniSectors} * kMiniSector;
  std::vector<std::uint32_t> order(streams.size());
  for (std::uint32_t i = 0; i < order.size(); ++i) {
    order[i] = i + 1;
    Entry& e = entries[i + 1];
    e.name = streams[i].name;
    e.type = 2;
    e.size = streams[i].bytes.size();
    e.start = miniStart[i] != kEndOfChain ? miniStart[i] : bigStart[i] != kEndOfChain ? bigAt + bigStart[i] : kEndOfChain;
  }
  std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) { return NameLess(entries[a].name, entries[b].name); });
  for (std::size_t i = 1; i < order.size(); ++i)
    if (!NameLess(entries[order[i - 1]].name, entries[order[i]].name)) throw std::invalid_argument("two streams of one name");
  int fullDepth = 0;
  while ((std::size_t{2} << fullDepth) - 1 <= order.size()) ++fullDepth;  // levels that are full
  std::function<std::uint32_t(std::size_t, std::size_t, int)> build = [&](std::size_t lo, std::size_t hi, int depth) {
    if (lo >= hi) return kNoStream;
    const std::size_t mid = lo + (hi - lo) / 2;
    Entry& e = entries[order[mid]];
    e.colour = depth >= fullDepth ? 0 : 1;
    e.left = build(lo, mid, depth + 1);
    e.right = build(mid + 1, hi, depth + 1);
    return order[mid];
  };
  entries[0].child = build(0, order.size(), 0);
  for (std::size_t i = 0; i < std::uint64_t{dirSectors} * 4; ++i) {
    const std::uint64_t at = sector(dirAt) + 128 * i;
    if (i >= entries.size()) {
      Put32(out, at + 68, kNoStream);
      Put32(out, at + 72, kNoStream);
      Put32(out, at + 76, kNoStream);
      continue;
    }
    const Entry& e = entries[i];
    for (std::size_t k = 0; k < e.name.size(); ++k) Put16(out, at + 2 * k, static_cast<std::uint16_t>(e.name[k]));
    Put16(out, at + 64, static_cast<std::uint16_t>(2 * (e.name.size() + 1)));
    out[at + 66] = static_cast<char>(e.type);
    out[at + 67] = static_cast<char>(e.colour);
    Put32(out, at + 68, e.left);
    Put32(out, at + 72, e.right);
    Put32(out, at + 76, e.child);
    std::memcpy(&out[at + 80], e.clsid.data(), 16);
    Put32(out, at + 116, e.start);
    Put32(out, at + 120, static_cast<std::uint32_t>(e.size));
  }

  // Header, with the first 109 FAT sectors; the DIFAT sectors list the rest.
  std::memcpy(&out[0], kSignature, sizeof kSignature);
  Put16(out, 24, 0x003E);
  Put16(out, 26, 0x0003);
  Put16(out, 28, 0xFFFE);
  Put16(out, 30, 9);
  Put16(out, 32, 6);
  Put32(out, 44, fat);
  Put32(out, 48, dirAt);
  Put32(out, 56, kMiniCutoff);
  Put32(out, 60, miniFatSectors ? miniFatAt : kEndOfChain);
  Put32(out, 64, miniFatSectors);
  Put32(out, 68, difat ? difatAt : kEndOfChain);
  Put32(out, 72, difat);
  for (std::uint32_t i = 0; i < 109; ++i) Put32(out, 76 + 4 * i, i < fat ? fatAt + i : kFree);
  for (std::uint32_t d = 0; d < difat; ++d) {
    for (std::uint32_t k = 0; k < 127; ++k) {
      const std::uint32_t n = 109 + d * 127 + k;
      Put32(out, sector(difatAt + d) + 4 * k, n < fat ? fatAt + n : kFree);
    }
    Put32(out, sector(difatAt + d) + 508, d + 1 < difat ? difatAt + d + 1 : kEndOfChain);
  }
  return out;
}

}  // namespace docx
