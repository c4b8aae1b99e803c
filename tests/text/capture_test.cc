// Captures, read back by their documented bytes (docs/captures.md) rather than by the writer's
// code.
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <virtual_modem/capture.h>
#include <virtual_modem/radio.pb.h>
#include <virtual_modem/text.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace virtual_modem {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr std::size_t kFileHeader = 24;

struct Record {
  std::uint32_t seconds;
  std::uint32_t microseconds;
  bool to_modem;
  int operation;
  std::string type;
  std::string bytes;
};

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::uint32_t Number(std::string_view bytes, std::size_t at, int size, bool big) {
  std::uint32_t value = 0;
  for (int i = 0; i < size; ++i) {
    const auto byte = static_cast<std::uint8_t>(bytes[at + static_cast<std::size_t>(i)]);
    value |= static_cast<std::uint32_t>(byte) << (8 * (big ? size - 1 - i : i));
  }
  return value;
}

std::vector<Record> ReadCapture(const std::string& path) {
  const std::string file = ReadFile(path);
  EXPECT_EQ(file.substr(0, kFileHeader),
            std::string("\xd4\xc3\xb2\xa1\x02\0\x04\0\0\0\0\0\0\0\0\0\xff\xff\0\0\x65\0\0\0", 24));
  std::vector<Record> records;
  std::size_t at = kFileHeader;
  while (at + 16 <= file.size()) {
    const std::uint32_t size = Number(file, at + 8, 4, false);
    EXPECT_EQ(Number(file, at + 12, 4, false), size);
    const std::string packet = file.substr(at + 16, size);
    Record record{Number(file, at, 4, false), Number(file, at + 4, 4, false), false, 0, {}, {}};
    at += 16 + size;
    EXPECT_EQ(packet.size(), size);

    std::uint32_t sum = 0;  // of a header whose checksum is right: all ones
    for (std::size_t i = 0; i < 20; i += 2) sum += Number(packet, i, 2, true);
    EXPECT_EQ((sum & 0xFFFF) + (sum >> 16), 0xFFFFU);
    EXPECT_EQ(packet.substr(0, 2) + packet.substr(4, 6) + packet.substr(12, 8),
              std::string("\x45\0\0\0\0\0\x40\x11\x7f\0\0\1\x7f\0\0\1", 16));
    EXPECT_EQ(Number(packet, 2, 2, true), size);
    const std::uint32_t from = Number(packet, 20, 2, true);
    const std::uint32_t to = Number(packet, 22, 2, true);
    record.to_modem = to == 47602;
    EXPECT_EQ(from + to, 47601U + 47602U);
    EXPECT_EQ(Number(packet, 24, 4, true), (size - 20) << 16);  // length, no checksum

    const std::string_view bytes = std::string_view(packet).substr(28);
    const FrameRead read = ReadFrame(bytes, bytes.size());
    EXPECT_EQ(read.size, bytes.size()) << Explain(read.status);
    record.operation = read.frame.operation;
    record.type = read.frame.type;
    record.bytes = read.frame.message;
    records.push_back(record);
  }
  EXPECT_EQ(at, file.size());
  return records;
}

class Capture : public ::testing::Test {
 protected:
  Capture() {
    std::string name = ::testing::TempDir() + "captureXXXXXX";
    folder_ = mkdtemp(name.data());
    path_ = folder_ + "/messages.pcap";
    dial_.set_platformtype(MTK);
    dial_.set_serial(7);
    dial_.set_address("+861012345678");
    dial_.set_clir(CLIR_DEFAULT);
  }
  ~Capture() override { std::filesystem::remove_all(folder_); }

  static unsigned ModeOf(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? info.st_mode & 0777U : 0;
  }

  std::string folder_;
  std::string path_;
  Dial dial_;
  CaptureWriter writer_;
};

TEST_F(Capture, HoldsWhatWasWritten) {
  const std::time_t before = std::time(nullptr);
  ASSERT_TRUE(writer_.Open(path_, {true, 0, false})) << writer_.error();
  EXPECT_TRUE(writer_.Write(Direction::kToModem, dial_, 8));
  EXPECT_TRUE(writer_.Write(Direction::kToTelephony, "NoResultResponse", "\x08\x02\x10\x07\x18"));
  // It is all there while the file is still open.
  const auto records = ReadCapture(path_);
  ASSERT_EQ(records.size(), 2U);
  EXPECT_GE(records[0].seconds, before);
  EXPECT_LE(records[1].seconds, std::time(nullptr) + 1);  // time()'s clock lags by up to a tick
  EXPECT_LT(records[0].microseconds, 1'000'000U);
  EXPECT_TRUE(records[0].to_modem);
  EXPECT_EQ(records[0].operation, 8);
  EXPECT_EQ(records[0].type, "Dial");
  EXPECT_EQ(records[0].bytes, dial_.SerializeAsString());
  EXPECT_FALSE(records[1].to_modem);
  EXPECT_EQ(records[1].operation, 0);
  EXPECT_EQ(records[1].bytes, "\x08\x02\x10\x07\x18");
  EXPECT_EQ(ModeOf(path_), 0600U);
}

TEST_F(Capture, IsMaskedUnlessAskedOtherwise) {
  ASSERT_TRUE(writer_.Open(path_));
  EXPECT_TRUE(writer_.Write(Direction::kToModem, dial_));
  EXPECT_TRUE(writer_.Write(Direction::kToModem, "Dial", dial_.SerializeAsString()));
  EXPECT_TRUE(writer_.Write(Direction::kToModem, "NewerType", "+861012345678"));
  EXPECT_EQ(ReadFile(path_).find("8610"), std::string::npos);
  const auto records = ReadCapture(path_);
  EXPECT_EQ(records[0].bytes, MaskedBytes(dial_));
  EXPECT_EQ(records[1].bytes, MaskedBytes(dial_));
  EXPECT_EQ(records[2].type, "NewerType");
  EXPECT_EQ(records[2].bytes, "");
}

TEST_F(Capture, RefusesWhatItCannotHold) {
  EXPECT_FALSE(writer_.Write(Direction::kToModem, dial_));
  EXPECT_EQ(writer_.error(), "no capture is open");
  ASSERT_TRUE(writer_.Open(path_, {true, 0, false}));
  EXPECT_EQ(writer_.error(), "");
  for (const std::string& type : {std::string(), std::string(65, 'a'), std::string("Di al")}) {
    EXPECT_FALSE(writer_.Write(Direction::kToModem, type, ""));
    EXPECT_THAT(writer_.error(), HasSubstr("not the name of a message type"));
  }
  const std::string largest(CaptureWriter::kMaxMessageBytes, '\0');
  EXPECT_FALSE(writer_.Write(Direction::kToModem, "Dial", largest + "x"));
  EXPECT_THAT(writer_.error(), StartsWith(path_ + ": a Dial of 65436 bytes is larger"));
  EXPECT_TRUE(writer_.Write(Direction::kToModem, std::string(64, 'a'), largest));
  const auto records = ReadCapture(path_);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].bytes.size(), largest.size());
}

TEST_F(Capture, SaysWhyItCannotBeOpened) {
  EXPECT_FALSE(writer_.Open(folder_ + "/no/such/folder"));
  EXPECT_EQ(writer_.error(), folder_ + "/no/such/folder: No such file or directory");
  EXPECT_FALSE(writer_.Open(folder_));
  EXPECT_FALSE(writer_.Open("/dev/full"));
  EXPECT_EQ(writer_.error(), "/dev/full: No space left on device");
  EXPECT_FALSE(writer_.Write(Direction::kToModem, dial_));
}

TEST_F(Capture, ReplacesAFileUnlessAskedToContinueIt) {
  for (const std::string& content : {std::string("a letter"), std::string(100, '\0')}) {
    std::ofstream(path_, std::ios::binary) << content;
    EXPECT_FALSE(writer_.Open(path_, {true, 0, true}));
    EXPECT_THAT(writer_.error(), HasSubstr("is not a capture of this form"));
    EXPECT_EQ(ReadFile(path_), content);
  }
  for (const bool append : {false, true, true, false}) {
    ASSERT_TRUE(append ? writer_.Open(path_, {true, 0, true}) : writer_.Open(path_))
        << writer_.error();
    const std::size_t before = append ? ReadCapture(path_).size() : 0;
    ASSERT_TRUE(writer_.Write(Direction::kToModem, dial_));
    EXPECT_EQ(ReadCapture(path_).size(), before + 1);
  }
}

TEST_F(Capture, DropsWhatABrokenWriteLeftBehind) {
  ASSERT_TRUE(writer_.Open(path_, {true, 0, false}));
  ASSERT_TRUE(writer_.Write(Direction::kToModem, dial_));
  writer_.Close();
  const std::string whole = ReadFile(path_);
  for (std::size_t cut = kFileHeader; cut < whole.size(); ++cut) {
    std::ofstream(path_, std::ios::binary) << whole << whole.substr(kFileHeader, cut - kFileHeader);
    ASSERT_TRUE(writer_.Open(path_, {true, 0, true})) << writer_.error();
    ASSERT_TRUE(writer_.Write(Direction::kToModem, dial_));
    EXPECT_EQ(ReadCapture(path_).size(), 2U);
  }
}

TEST_F(Capture, RotatesOverTwoFiles) {
  const auto serials = [](const std::string& path) {
    std::string text;
    for (const Record& each : ReadCapture(path)) {
      Dial dial;
      dial.ParseFromString(each.bytes);
      text += std::to_string(dial.serial());
    }
    return text;
  };
  const auto free_descriptor = [] {
    const int descriptor = dup(1);
    close(descriptor);
    return static_cast<rlim_t>(descriptor);
  };
  close(0);  // a descriptor as any other
  writer_.Open(path_);
  ASSERT_TRUE(writer_.Write(Direction::kToModem, dial_));
  const std::size_t record = ReadFile(path_).size() - kFileHeader;
  ASSERT_TRUE(writer_.Open(path_, {true, kFileHeader + 3 * record, false}));
  const rlim_t before = free_descriptor();
  for (int serial = 0; serial < 8; ++serial) {
    dial_.set_serial(serial);
    ASSERT_TRUE(writer_.Write(Direction::kToModem, dial_)) << writer_.error();
  }
  EXPECT_EQ(serials(path_ + ".1"), "345");
  EXPECT_EQ(serials(path_), "67");
  EXPECT_EQ(ModeOf(path_), 0600U);
  EXPECT_EQ(free_descriptor(), before) << "the full file is still open";

  // Without a descriptor for a new file, all stays as it was.
  ASSERT_TRUE(writer_.Write(Direction::kToModem, dial_));
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit none_free{before, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none_free);
  EXPECT_FALSE(writer_.Write(Direction::kToModem, dial_));
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(writer_.error(), path_ + ": Too many open files");
  EXPECT_EQ(serials(path_), "677");
  EXPECT_TRUE(writer_.Write(Direction::kToModem, dial_)) << writer_.error();
  EXPECT_EQ(serials(path_ + ".1"), "677");

  // A bound smaller than one record still records.
  ASSERT_TRUE(writer_.Open(path_, {true, 1, false}));
  EXPECT_TRUE(writer_.Write(Direction::kToModem, dial_));
  EXPECT_EQ(serials(path_ + ".1"), "677") << "a file without a record was rotated";
  EXPECT_TRUE(writer_.Write(Direction::kToModem, dial_));
  EXPECT_EQ(serials(path_), "7");
  EXPECT_EQ(serials(path_ + ".1"), "7");
  writer_.Close();
  EXPECT_EQ(free_descriptor(), 0U);
}

TEST_F(Capture, EndsWithAWholeRecordWhenTheDiskIsFull) {
  ASSERT_TRUE(writer_.Open(path_, {true, 0, false}));
  ASSERT_TRUE(writer_.Write(Direction::kToModem, dial_));
  const std::size_t size = ReadFile(path_).size();
  // The system writes up to the limit and no further, as on a full disk.
  const auto ignored = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  rlimit small = limit;
  small.rlim_cur = size + 10;
  setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_FALSE(writer_.Write(Direction::kToModem, dial_));
  EXPECT_FALSE(writer_.error().empty());
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, ignored);
  EXPECT_EQ(ReadFile(path_).size(), size);
  EXPECT_TRUE(writer_.Write(Direction::kToModem, dial_));
  EXPECT_EQ(ReadCapture(path_).size(), 2U);
}

TEST_F(Capture, TakesMessagesFromSeveralThreads) {
  ASSERT_TRUE(writer_.Open(path_, {true, 0, false}));
  std::vector<std::thread> threads;
  threads.reserve(8);
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([this, thread] {
      Dial dial = dial_;
      dial.set_serial(thread);
      for (int i = 0; i < 100; ++i) writer_.Write(Direction::kToModem, dial);
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::map<std::string, int> counts;
  for (const Record& record : ReadCapture(path_)) ++counts[record.bytes];
  ASSERT_EQ(counts.size(), 4U);
  for (const auto& [bytes, count] : counts) EXPECT_EQ(count, 100) << bytes;
}

}  // namespace
}  // namespace virtual_modem
