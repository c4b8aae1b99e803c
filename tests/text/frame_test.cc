// The frame and its reader, whose bytes docs/captures.md describes.
#include <gmock/gmock.h>
#include <virtual_modem/frame.h>
#include <virtual_modem/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace virtual_modem {
namespace {

using ::testing::ElementsAre;

const std::string kDial(
    "VM\x08\x04\0\0\0\x05"
    "Dial12345",
    17);

TEST(Frame, IsWrittenAsDocumented) {
  std::string out = "before";
  EXPECT_TRUE(AppendFrame({8, "Dial", "12345"}, out));
  EXPECT_EQ(out, "before" + kDial);
  Hangup message;  // lacks required fields
  message.set_serial(7);
  EXPECT_TRUE(AppendFrame(message, 0, out));
  EXPECT_EQ(out.substr(6 + kDial.size()), std::string("VM\0\x06\0\0\0\x02Hangup\x10\x07", 16));
  EXPECT_TRUE(AppendFrame({255, std::string(64, 'a'), std::string(0x10203, 'x')}, out));
  EXPECT_EQ(out.substr(6 + kDial.size() + 16, 8), std::string("VM\xff\x40\0\x01\x02\x03", 8));

  const std::string whole = out;
  for (const std::string& type : {std::string(), std::string(65, 'a'), std::string("Di al")}) {
    EXPECT_FALSE(AppendFrame({0, type, ""}, out));
  }
  if constexpr (sizeof(std::size_t) > 4) {
    const std::string_view too_large(out.data(), static_cast<std::size_t>(1ULL << 32U));
    EXPECT_FALSE(AppendFrame({0, "Dial", too_large}, out));  // without a look at it
  }
  EXPECT_EQ(out, whole);
}

TEST(Frame, IsReadOrRefusedByItsFirstBytes) {
  const std::string two = kDial + "VM";
  const FrameRead read = ReadFrame(two, 5);
  EXPECT_EQ(read.status, FrameStatus::kFrame);
  EXPECT_EQ(read.size, kDial.size());
  EXPECT_EQ(read.frame.operation, 8);
  EXPECT_EQ(read.frame.type, "Dial");
  EXPECT_EQ(read.frame.message, "12345");
  for (std::size_t cut = 0; cut < kDial.size(); ++cut) {
    const FrameRead less = ReadFrame(std::string_view(kDial).substr(0, cut), 5);
    EXPECT_EQ(less.status, FrameStatus::kMoreNeeded) << cut;
    EXPECT_EQ(less.size, cut < 8 ? 8 : kDial.size()) << cut;
  }

  // Whatever follows the byte that is wrong, it is not waited for.
  struct Wrong {
    std::size_t at;
    std::string byte;
    FrameStatus status;
    std::size_t known_at;
  };
  for (const Wrong& wrong :
       {Wrong{0, "W", FrameStatus::kNotAFrame, 1}, Wrong{1, "m", FrameStatus::kNotAFrame, 2},
        Wrong{3, std::string(1, '\0'), FrameStatus::kBadType, 4},
        Wrong{3, "\x41", FrameStatus::kBadType, 4}, Wrong{4, "\xff", FrameStatus::kTooLarge, 8},
        Wrong{7, "\x06", FrameStatus::kTooLarge, 8}, Wrong{8, "-", FrameStatus::kBadType, 9},
        Wrong{11, "\xe4", FrameStatus::kBadType, 12}}) {
    std::string bytes = kDial;
    bytes.replace(wrong.at, 1, wrong.byte);
    for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
      const FrameRead cut_read = ReadFrame(std::string_view(bytes).substr(0, cut), 5);
      EXPECT_EQ(cut_read.status, cut < wrong.known_at ? FrameStatus::kMoreNeeded : wrong.status)
          << wrong.at << " cut at " << cut;
      if (cut_read.status != FrameStatus::kTooLarge) continue;
      EXPECT_EQ(cut_read.frame.type, cut < 12 ? "" : "Dial");
      EXPECT_EQ(cut_read.size, wrong.at == 4 ? 0xFF000000U + 17 : 18);
    }
  }
  // Each byte that a name may have, and no other.
  std::string legal;
  for (int byte = 0; byte < 256; ++byte) {
    std::string bytes = kDial;
    bytes[10] = static_cast<char>(byte);
    if (ReadFrame(bytes, 5).status == FrameStatus::kFrame) legal += bytes[10];
  }
  EXPECT_EQ(legal, ".0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz");
}

// What the reader tells of a stream that comes in two pieces and then byte by byte; asserts that
// all are told alike.
std::vector<std::string> Told(const std::string& stream, FrameReader::TooLarge too_large) {
  std::vector<std::string> first;
  for (std::size_t cut = 0; cut <= stream.size() + 1; ++cut) {
    FrameReader reader(5, too_large);
    std::vector<std::string> told;
    const auto add = [&](std::string piece) {
      reader.Add(piece);
      piece.assign(piece.size(), '!');  // it is the caller's again
      while (const auto read = reader.Next()) {
        std::string line = Explain(read->status);
        if (!read->frame.type.empty()) {
          std::string told(read->frame.type);
          told.append("/").append(std::to_string(read->frame.operation)).append(" ");
          line = told.append(read->frame.message).append(" ").append(line);
        }
        told.push_back(line);
      }
    };
    if (cut <= stream.size()) {
      add(stream.substr(0, cut));
      add(stream.substr(cut));
    } else {
      for (const char byte : stream) add({byte});
    }
    told.emplace_back(reader.ended() ? "ended" : reader.between_frames() ? "between" : "within");
    if (cut == 0) first = told;
    EXPECT_EQ(told, first) << "cut at " << cut;
  }
  return first;
}

TEST(FrameReader, ReadsAStreamWhereverItIsCut) {
  const std::string ring("VM\0\x01\0\0\0\0R", 9);
  const std::string large(
      "VM\x07\x05\0\0\0\x14"
      "LargeVM\0\x01\0\0\0\0R-----------",
      33);
  const auto ends = FrameReader::TooLarge::kEnds;
  const auto skipped = FrameReader::TooLarge::kSkipped;
  EXPECT_THAT(
      Told(kDial + ring + kDial, ends),
      ElementsAre("Dial/8 12345 is sound", "R/0  is sound", "Dial/8 12345 is sound", "between"));
  EXPECT_THAT(Told(ring + kDial.substr(0, 16), skipped), ElementsAre("R/0  is sound", "within"));
  EXPECT_THAT(Told(kDial + large + kDial, ends),
              ElementsAre("Dial/8 12345 is sound", "Large/7  is larger than allowed", "ended"));
  EXPECT_THAT(Told(large + large + kDial, skipped),
              ElementsAre("Large/7  is larger than allowed", "Large/7  is larger than allowed",
                          "Dial/8 12345 is sound", "between"));
  EXPECT_THAT(Told(large.substr(0, 32), skipped),
              ElementsAre("Large/7  is larger than allowed", "within"));
  const std::string noisy = ring + "noise" + ring;
  for (const auto too_large : {ends, skipped}) {
    EXPECT_THAT(Told(noisy, too_large),
                ElementsAre("R/0  is sound", "does not begin with 'VM'", "ended"));
  }
}

}  // namespace
}  // namespace virtual_modem
