#include "server/engine/backup_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "server/engine/host_file.h"

namespace dbkeeper::server {

namespace {

constexpr std::string_view kMediumMark = "DB KEEPER BACKUP";
constexpr std::string_view kSetMark = "BACKUP SET BEGIN";
constexpr std::string_view kEndMark = "BACKUP SET ENDED";
constexpr std::size_t kIdSize = 16;
constexpr std::size_t kNumberSize = 8;
constexpr std::size_t kBlockSize = 1 << 20;
constexpr std::uint64_t kLongestDescription = 1 << 20;

// Gives every number another one.
std::uint64_t Mix(std::uint64_t number) {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
  number *= kFactor;
  return number ^ (number >> 32);
}

// Any change within one word changes the sum, and so does any order of the words. Four sums run
// side by side because each has to wait for its last word.
std::uint64_t Checksum(std::uint64_t seed, std::string_view bytes) {
  using Words = std::array<std::uint64_t, 4>;
  std::uint64_t sum = seed ^ bytes.size();
  Words sums = {sum + 1, sum + 2, sum + 3, sum + 4};
  for (; bytes.size() >= sizeof(Words); bytes.remove_prefix(sizeof(Words))) {
    Words words;
    std::memcpy(words.data(), bytes.data(), sizeof(Words));
    for (std::size_t i = 0; i < words.size(); ++i) sums[i] = Mix(sums[i] ^ words[i]);
  }
  for (const std::uint64_t part : sums) sum = Mix(sum ^ part);
  while (!bytes.empty()) {
    std::uint64_t word = 0;
    const std::size_t count = std::min(bytes.size(), sizeof(word));
    std::memcpy(&word, bytes.data(), count);
    sum = Mix(sum ^ word);
    bytes.remove_prefix(count);
  }
  return sum;
}

std::string NumberBytes(std::uint64_t number) {
  std::string bytes;
  for (std::size_t i = 0; i < kNumberSize; ++i) bytes += static_cast<char>(number >> (8 * i) & 255);
  return bytes;
}

std::uint64_t NumberOf(std::string_view bytes) {
  std::uint64_t number = 0;
  for (std::size_t i = kNumberSize; i > 0; --i) {
    number = number << 8 | static_cast<unsigned char>(bytes[i - 1]);
  }
  return number;
}

// Fields one after the other, each behind its length.
class DescriptionWriter {
 public:
  void Add(std::string_view field) {
    text_ += NumberBytes(field.size());
    text_ += field;
  }
  void Add(std::int64_t number) { Add(std::string_view(std::to_string(number))); }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

class DescriptionReader {
 public:
  explicit DescriptionReader(std::string_view text) : text_(text) {}
  std::string Text() {
    if (text_.size() < kNumberSize) throw MalformedBackup();
    const std::uint64_t size = NumberOf(text_);
    text_.remove_prefix(kNumberSize);
    if (size > text_.size()) throw MalformedBackup();
    std::string field(text_.substr(0, size));
    text_.remove_prefix(size);
    return field;
  }
  std::int64_t Number() {
    const std::string field = Text();
    std::int64_t number = 0;
    const auto end = field.data() + field.size();
    const auto [stop, error] = std::from_chars(field.data(), end, number);
    if (error != std::errc() || stop != end) throw MalformedBackup();
    return number;
  }

 private:
  std::string_view text_;
};

std::string Describe(const BackupHeader& header) {
  DescriptionWriter writer;
  for (const std::string* field :
       {&header.set_id, &header.family, &header.database, &header.name, &header.description,
        &header.user, &header.server, &header.machine}) {
    writer.Add(std::string_view(*field));
  }
  for (const std::int64_t number :
       {header.created, header.started, header.finished, header.data_size,
        static_cast<std::int64_t>(header.files.size())}) {
    writer.Add(number);
  }
  for (const BackedUpFile& file : header.files) {
    writer.Add(std::string_view(file.logical_name));
    writer.Add(std::string_view(file.physical_name));
    writer.Add(std::string_view(&file.type, 1));
    writer.Add(file.size);
  }
  return writer.text();
}

BackupHeader HeaderOf(std::string_view description) {
  DescriptionReader reader(description);
  BackupHeader header;
  for (std::string* field : {&header.set_id, &header.family, &header.database, &header.name,
                             &header.description, &header.user, &header.server, &header.machine}) {
    *field = reader.Text();
  }
  for (std::int64_t* number :
       {&header.created, &header.started, &header.finished, &header.data_size}) {
    *number = reader.Number();
  }
  const std::int64_t files = reader.Number();
  for (std::int64_t i = 0; i < files; ++i) {
    BackedUpFile file;
    file.logical_name = reader.Text();
    file.physical_name = reader.Text();
    const std::string type = reader.Text();
    if (type.size() != 1) throw MalformedBackup();
    file.type = type[0];
    file.size = reader.Number();
    header.files.push_back(std::move(file));
  }
  if (header.data_size < 0) throw MalformedBackup();
  return header;
}

std::string ReadExactly(HostFile& file, std::size_t count) {
  std::string bytes(count, '\0');
  if (file.Read(bytes.data(), count) != count) throw MalformedBackup();
  return bytes;
}

// Bytes of a set's data in the file: blocks with their sums.
std::int64_t SizeInFile(std::int64_t data_size) {
  const auto block = static_cast<std::int64_t>(kBlockSize);
  const std::int64_t blocks = (data_size + block - 1) / block;
  return data_size + blocks * static_cast<std::int64_t>(kNumberSize);
}

BackupSet ReadSet(HostFile& file, std::int64_t offset, std::int64_t file_size) {
  const std::string front = ReadExactly(file, kSetMark.size() + kNumberSize);
  const std::uint64_t length = NumberOf(std::string_view(front).substr(kSetMark.size()));
  if (!front.starts_with(kSetMark) || length > kLongestDescription) throw MalformedBackup();
  const std::string description = ReadExactly(file, length);
  BackupSet set;
  set.seed = Checksum(Checksum(0, front), description);
  if (NumberOf(ReadExactly(file, kNumberSize)) != set.seed) throw MalformedBackup();
  set.header = HeaderOf(description);
  set.data_offset =
      offset + static_cast<std::int64_t>(front.size() + description.size() + kNumberSize);
  if (set.header.data_size > file_size) throw MalformedBackup();
  return set;
}

std::int64_t EndOf(const BackupSet& set) {
  return set.data_offset + SizeInFile(set.header.data_size) +
         static_cast<std::int64_t>(kEndMark.size());
}

bool CopyAll(HostFile& from, HostFile& to, const KeepGoing& keep_going) {
  std::string block(kBlockSize, '\0');
  for (;;) {
    const std::size_t count = from.Read(block.data(), block.size());
    if (count == 0) return true;
    if (!keep_going()) return false;
    to.Write(std::string_view(block).substr(0, count));
  }
}

}  // namespace

BackupMedium ReadBackupMedium(const std::filesystem::path& path) {
  HostFile file = HostFile::Open(path);
  BackupMedium medium;
  medium.size = file.Size();
  const std::string head = ReadExactly(file, kMediumMark.size() + kIdSize);
  if (!head.starts_with(kMediumMark)) throw MalformedBackup();
  if (NumberOf(ReadExactly(file, kNumberSize)) != Checksum(0, head)) throw MalformedBackup();
  medium.id = head.substr(kMediumMark.size());
  auto offset = static_cast<std::int64_t>(head.size() + kNumberSize);
  while (offset < medium.size) {
    BackupSet set = ReadSet(file, offset, medium.size);
    offset = EndOf(set);
    if (offset > medium.size) throw MalformedBackup();
    file.Seek(offset - static_cast<std::int64_t>(kEndMark.size()));
    if (ReadExactly(file, kEndMark.size()) != kEndMark) throw MalformedBackup();
    medium.sets.push_back(std::move(set));
  }
  if (medium.sets.empty()) throw MalformedBackup();
  return medium;
}

bool ReadBackupData(const std::filesystem::path& path, const BackupSet& set,
                    const std::function<void(std::string_view)>& take,
                    const KeepGoing& keep_going) {
  HostFile file = HostFile::Open(path);
  file.Seek(set.data_offset);
  std::string block(kBlockSize + kNumberSize, '\0');
  std::uint64_t sum = set.seed;
  auto left = static_cast<std::uint64_t>(set.header.data_size);
  while (left > 0) {
    if (!keep_going()) return false;
    const std::size_t count = std::min<std::uint64_t>(left, kBlockSize);
    if (file.Read(block.data(), count + kNumberSize) != count + kNumberSize) {
      throw MalformedBackup();
    }
    const std::string_view data = std::string_view(block).substr(0, count);
    sum = Checksum(sum, data);
    if (NumberOf(std::string_view(block).substr(count)) != sum) throw MalformedBackup();
    take(data);
    left -= count;
  }
  return true;
}

bool WriteBackup(const std::filesystem::path& path, const std::string& medium_id,
                 const std::filesystem::path& earlier, const BackupHeader& header,
                 const ReadAt& read, const KeepGoing& keep_going) {
  HostFile file = HostFile::Make(path);
  if (earlier.empty()) {
    const std::string head = std::string(kMediumMark) + medium_id;
    file.Write(head + NumberBytes(Checksum(0, head)));
  } else {
    HostFile old = HostFile::Open(earlier);
    if (!CopyAll(old, file, keep_going)) return false;
  }
  const std::string description = Describe(header);
  const std::string front = std::string(kSetMark) + NumberBytes(description.size());
  std::uint64_t sum = Checksum(Checksum(0, front), description);
  file.Write(front + description + NumberBytes(sum));
  std::string block(kBlockSize, '\0');
  std::int64_t offset = 0;
  while (offset < header.data_size) {
    if (!keep_going()) return false;
    const auto left = static_cast<std::uint64_t>(header.data_size - offset);
    const std::size_t count = std::min<std::uint64_t>(left, kBlockSize);
    read(offset, block.data(), count);
    const std::string_view part = std::string_view(block).substr(0, count);
    sum = Checksum(sum, part);
    file.Write(part);
    file.Write(NumberBytes(sum));
    offset += static_cast<std::int64_t>(count);
  }
  file.Write(kEndMark);
  file.Sync();
  return true;
}

}  // namespace dbkeeper::server
