#include "document/xls/CompoundFile.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "document/xls/Bytes.h"

namespace dbkeeper::xls {

namespace {

constexpr std::size_t kSector = 512;
constexpr std::size_t kNumbersInSector = kSector / 4;
// Shorter streams would have to lie in a stream of their own for short ones.
constexpr std::size_t kShortestStream = 4096;
constexpr std::size_t kLongestStream = 0x7FFFFFFF;
// So many sectors of the table of sectors are listed in the head; further ones in sectors that
// only list, the last number of each being that of the next one.
constexpr std::size_t kListedInHead = 109;
constexpr std::size_t kListedInSector = kNumbersInSector - 1;

constexpr std::uint32_t kFree = 0xFFFFFFFF;
constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE;
constexpr std::uint32_t kTableSector = 0xFFFFFFFD;
constexpr std::uint32_t kListSector = 0xFFFFFFFC;

std::size_t Ratio(std::size_t amount, std::size_t unit) { return (amount + unit - 1) / unit; }

// How many sectors of what there are. They stand in the file in this order.
struct Plan {
  explicit Plan(std::size_t stream_size)
      : stream_bytes(std::max(stream_size, kShortestStream)), stream(Ratio(stream_bytes, kSector)) {
    // The table has a number for each of its own sectors, too.
    for (std::size_t total = 0; total != Total();) {
      total = Total();
      table = Ratio(total, kNumbersInSector);
      list = table > kListedInHead ? Ratio(table - kListedInHead, kListedInSector) : 0;
    }
  }

  std::size_t Total() const { return stream + directory + table + list; }
  std::uint32_t FirstDirectory() const { return static_cast<std::uint32_t>(stream); }
  std::uint32_t FirstTable() const { return static_cast<std::uint32_t>(stream + directory); }
  std::uint32_t FirstList() const { return static_cast<std::uint32_t>(FirstTable() + table); }
  // The numbers of the table's sectors from `from` on, `count` of them or free ones.
  void ListTables(Bytes& out, std::size_t from, std::size_t count) const {
    for (std::size_t i = from; i < from + count; ++i) {
      out.U32(i < table ? static_cast<std::uint32_t>(FirstTable() + i) : kFree);
    }
  }

  std::size_t stream_bytes;
  std::size_t stream;
  std::size_t directory = 1;
  std::size_t table = 0;
  std::size_t list = 0;
};

Bytes Head(const Plan& plan) {
  Bytes out;
  out.Raw("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1");
  out.Fill(16, '\0');
  // Version, byte order, sizes of sectors as powers of two.
  out.U16s({0x003E, 0x0003, 0xFFFE, 9, 6});
  out.Fill(10, '\0');
  out.U32(static_cast<std::uint32_t>(plan.table));
  out.U32(plan.FirstDirectory());
  out.U32(0);
  out.U32(kShortestStream);
  out.U32(kEndOfChain);
  out.U32(0);
  out.U32(plan.list > 0 ? plan.FirstList() : kEndOfChain);
  out.U32(static_cast<std::uint32_t>(plan.list));
  plan.ListTables(out, 0, kListedInHead);
  return out;
}

struct Entry {
  std::u16string_view name;
  std::uint8_t kind;
  std::uint32_t child;
  std::uint32_t start;
  std::uint32_t size;
};

void AddEntry(Bytes& out, const Entry& entry) {
  constexpr std::size_t kNameBytes = 64;
  constexpr std::uint8_t kBlack = 1;
  for (const char16_t unit : entry.name) out.U16(unit);
  out.Fill(kNameBytes - 2 * entry.name.size(), '\0');
  out.U16(static_cast<std::uint16_t>(entry.name.empty() ? 0 : 2 * (entry.name.size() + 1)));
  out.U8(entry.kind);
  out.U8(kBlack);
  out.U32(kFree);  // no neighbours
  out.U32(kFree);
  out.U32(entry.child);
  out.Fill(36, '\0');
  out.U32(entry.start);
  out.U32(entry.size);
  out.U32(0);
}

Bytes Directory(const Plan& plan) {
  constexpr std::uint8_t kUnused = 0;
  constexpr std::uint8_t kStream = 2;
  constexpr std::uint8_t kRoot = 5;
  Bytes out;
  AddEntry(out, {u"Root Entry", kRoot, 1, kEndOfChain, 0});
  AddEntry(out, {u"Workbook", kStream, kFree, 0, static_cast<std::uint32_t>(plan.stream_bytes)});
  AddEntry(out, {{}, kUnused, kFree, 0, 0});
  AddEntry(out, {{}, kUnused, kFree, 0, 0});
  return out;
}

void AddChain(Bytes& out, std::size_t count) {
  const std::size_t first = out.Size() / 4;
  for (std::size_t i = 1; i < count; ++i) out.U32(static_cast<std::uint32_t>(first + i));
  out.U32(kEndOfChain);
}

Bytes Table(const Plan& plan) {
  Bytes out;
  AddChain(out, plan.stream);
  AddChain(out, plan.directory);
  for (std::size_t i = 0; i < plan.table; ++i) out.U32(kTableSector);
  for (std::size_t i = 0; i < plan.list; ++i) out.U32(kListSector);
  out.Fill(plan.table * kSector - out.Size(), '\xFF');
  return out;
}

Bytes List(const Plan& plan) {
  Bytes out;
  for (std::size_t i = 0; i < plan.list; ++i) {
    plan.ListTables(out, kListedInHead + i * kListedInSector, kListedInSector);
    const bool last = i + 1 == plan.list;
    out.U32(last ? kEndOfChain : static_cast<std::uint32_t>(plan.FirstList() + i + 1));
  }
  return out;
}

}  // namespace

void WriteCompoundFile(std::span<const std::string_view> pieces, const ByteSink& sink) {
  std::size_t size = 0;
  for (const std::string_view piece : pieces) size += piece.size();
  if (size > kLongestStream) throw std::length_error("workbook");
  const Plan plan(size);
  sink(Head(plan).View());
  for (const std::string_view piece : pieces) sink(piece);
  sink(std::string(plan.stream * kSector - size, '\0'));
  sink(Directory(plan).View());
  sink(Table(plan).View());
  sink(List(plan).View());
}

}  // namespace dbkeeper::xls
