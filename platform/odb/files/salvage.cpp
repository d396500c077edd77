#include "salvage.h"

#include <optional>

namespace ulo::odb {
namespace {

// Offsets and values of SQLite's file format.
constexpr std::size_t pageSizeAt = 16;
constexpr std::size_t reservedAt = 20;
constexpr std::size_t freeListAt = 32;
constexpr std::size_t smallestPage = 512;
constexpr std::size_t largestPage = 65536;
constexpr unsigned char tableLeaf = 0x0D;
constexpr std::size_t leafHeader = 8;
// Larger than any row that the engine stores.
constexpr std::uint64_t largestPayload = std::uint64_t{65} << 20;
constexpr std::size_t mostColumns = 64;

std::uint64_t bigEndian(std::string_view bytes, std::size_t at, std::size_t size) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < size; ++i)
    value = value << 8U | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

// Reads variable-length integers. Fails at the end of the bytes.
class Numbers {
public:
  Numbers(std::string_view bytes, std::size_t at) : bytes_(bytes), at_(at) {}
  [[nodiscard]] std::size_t at() const { return at_; }
  [[nodiscard]] std::optional<std::uint64_t> next() {
    constexpr int longest = 9;
    std::uint64_t value = 0;
    for (int i = 1; i <= longest; ++i) {
      if (at_ >= bytes_.size())
        return std::nullopt;
      const auto byte = static_cast<unsigned char>(bytes_[at_++]);
      if (i == longest)
        return value << 8U | byte;
      value = value << 7U | (byte & 0x7FU);
      if (byte < 0x80)
        return value;
    }
    return std::nullopt;
  }

private:
  std::string_view bytes_;
  std::size_t at_;
};

class Pages {
public:
  explicit Pages(std::string_view file) : file_(file), size_(bigEndian(file, pageSizeAt, 2)) {
    if (size_ == 1)
      size_ = largestPage;
    usable_ = size_ - static_cast<unsigned char>(file[reservedAt]);
    isFree_.resize(count() + 1);
    markFree();
  }

  // The header has a valid page size.
  [[nodiscard]] bool areValid() const {
    return size_ >= smallestPage && size_ <= largestPage && (size_ & (size_ - 1)) == 0;
  }
  [[nodiscard]] std::size_t count() const { return size_ == 0 ? 0 : file_.size() / size_; }
  [[nodiscard]] std::size_t usable() const { return usable_; }
  [[nodiscard]] bool has(std::uint64_t number) const { return number >= 1 && number <= count(); }
  [[nodiscard]] bool isFree(std::size_t number) const { return isFree_[number]; }
  // Pages count from 1.
  [[nodiscard]] std::string_view page(std::size_t number) const {
    return file_.substr((number - 1) * size_, usable_);
  }

private:
  void markFree() {
    if (!areValid())
      return;
    std::uint64_t trunk = bigEndian(file_, freeListAt, 4);
    // A damaged list ends where it becomes invalid.
    while (has(trunk) && !isFree_[trunk]) {
      const std::string_view bytes = page(trunk);
      const std::uint64_t leaves = bigEndian(bytes, 4, 4);
      if (leaves > usable_ / 4 - 2)
        return;
      isFree_[trunk] = true;
      for (std::uint64_t i = 0; i < leaves; ++i) {
        const std::uint64_t leaf = bigEndian(bytes, 8 + i * 4, 4);
        if (has(leaf))
          isFree_[leaf] = true;
      }
      trunk = bigEndian(bytes, 0, 4);
    }
  }

  std::string_view file_;
  std::size_t size_;
  std::size_t usable_ = 0;
  std::vector<bool> isFree_;
};

// Returns the number of payload bytes stored in the leaf page itself.
std::uint64_t localBytes(std::uint64_t payload, std::size_t usable) {
  const std::uint64_t most = usable - 35;
  if (payload <= most)
    return payload;
  const std::uint64_t least = (usable - 12) * 32 / 255 - 23;
  const std::uint64_t wanted = least + (payload - least) % (usable - 4);
  return wanted <= most ? wanted : least;
}

std::optional<std::string> payloadOf(const Pages& pages, std::string_view page, std::size_t at,
                                     std::uint64_t size) {
  const std::uint64_t local = localBytes(size, pages.usable());
  if (at + local + (local < size ? 4 : 0) > page.size())
    return std::nullopt;
  std::string payload(page.substr(at, local));
  std::uint64_t next = local < size ? bigEndian(page, at + local, 4) : 0;
  while (payload.size() < size) {
    if (!pages.has(next) || pages.isFree(next))
      return std::nullopt;
    const std::string_view overflow = pages.page(next);
    payload += overflow.substr(4, size - payload.size());
    next = bigEndian(overflow, 0, 4);
  }
  // The last page of a payload has no successor.
  return next == 0 ? std::optional(std::move(payload)) : std::nullopt;
}

// Returns the size of a value with this serial type, or nothing if the type does not exist.
std::optional<std::uint64_t> sizeOf(std::uint64_t type) {
  constexpr std::uint64_t sizes[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0};
  constexpr std::uint64_t firstOfAnyLength = 12;
  if (type >= firstOfAnyLength)
    return (type - firstOfAnyLength) / 2;
  if (type >= std::size(sizes))
    return std::nullopt;
  return sizes[type];
}

SalvagedValue valueOf(std::uint64_t type, std::string_view bytes) {
  constexpr std::uint64_t real = 7;
  constexpr std::uint64_t one = 9;
  constexpr std::uint64_t firstBlob = 12;
  if (type == 0)
    return {};
  if (type >= firstBlob)
    return {type % 2 == 1 ? SalvagedValue::Kind::text : SalvagedValue::Kind::blob, 0,
            std::string(bytes)};
  if (type == real || type > one)
    return {SalvagedValue::Kind::other, 0, {}};
  if (bytes.empty())
    return {SalvagedValue::Kind::integer, type == one ? 1 : 0, {}};
  const unsigned int unused = 64 - 8 * static_cast<unsigned int>(bytes.size());
  const std::uint64_t value = bigEndian(bytes, 0, bytes.size()) << unused;
  return {SalvagedValue::Kind::integer, static_cast<std::int64_t>(value) >> unused, {}};
}

std::optional<std::vector<SalvagedValue>> valuesOf(std::string_view record) {
  Numbers header(record, 0);
  const std::optional<std::uint64_t> headerEnd = header.next();
  if (!headerEnd || *headerEnd > record.size())
    return std::nullopt;
  std::vector<SalvagedValue> values;
  std::size_t at = *headerEnd;
  while (header.at() < *headerEnd && values.size() <= mostColumns) {
    const std::optional<std::uint64_t> type = header.next();
    const std::optional<std::uint64_t> size = type ? sizeOf(*type) : std::nullopt;
    if (!size || *size > record.size() - at)
      return std::nullopt;
    values.push_back(valueOf(*type, record.substr(at, *size)));
    at += *size;
  }
  if (header.at() != *headerEnd || at != record.size())
    return std::nullopt;
  return values;
}

void salvagePage(const Pages& pages, std::size_t number,
                 const std::function<void(SalvagedRow&&)>& take) {
  const std::string_view page = pages.page(number);
  const std::size_t begin = number == 1 ? fileHeaderSize : 0;
  if (static_cast<unsigned char>(page[begin]) != tableLeaf)
    return;
  const std::uint64_t cells = bigEndian(page, begin + 3, 2);
  for (std::uint64_t i = 0; i < cells; ++i) {
    const std::size_t pointer = begin + leafHeader + i * 2;
    if (pointer + 2 > page.size())
      return;
    const std::uint64_t cell = bigEndian(page, pointer, 2);
    if (cell < begin + leafHeader || cell >= page.size())
      continue;
    Numbers numbers(page, cell);
    const std::optional<std::uint64_t> size = numbers.next();
    const std::optional<std::uint64_t> rowid = numbers.next();
    if (!size || !rowid || *size > largestPayload)
      continue;
    const std::optional<std::string> payload = payloadOf(pages, page, numbers.at(), *size);
    if (!payload)
      continue;
    if (auto values = valuesOf(*payload))
      take({static_cast<std::int64_t>(*rowid), std::move(*values)});
  }
}

}  // namespace

void salvageRows(std::string_view file, const std::function<void(SalvagedRow&&)>& take) {
  if (file.size() < fileHeaderSize)
    return;
  const Pages pages(file);
  if (!pages.areValid())
    return;
  for (std::size_t number = 1; number <= pages.count(); ++number) {
    if (!pages.isFree(number))
      salvagePage(pages, number, take);
  }
}

}  // namespace ulo::odb
