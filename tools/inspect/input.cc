#include "inspect/input.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/stubs/strutil.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "inspect/error.h"
#include "inspect/hex.h"

namespace virtual_modem::inspect {
namespace {

// Room for a message of the largest size as a hex dump.
constexpr std::size_t kMaxInputBytes = 6 * kMaxMessageBytes;

bool IsText(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](char c) {
    return (c >= ' ' && c <= '~') || c == '\t' || c == '\n' || c == '\r';
  });
}

// Either alphabet, in lines or not.
bool ParseBase64(std::string_view text, std::string& bytes) {
  const google::protobuf::StringPiece piece(text.data(), text.size());
  return google::protobuf::Base64Unescape(piece, &bytes) ||
         google::protobuf::WebSafeBase64Unescape(piece, &bytes);
}

}  // namespace

std::string ReadAll(const std::string& path) {
  struct Close {
    void operator()(std::FILE* file) const {
      if (file != stdin) std::fclose(file);
    }
  };
  const std::unique_ptr<std::FILE, Close> file(path == "-" ? stdin
                                                           : std::fopen(path.c_str(), "rbe"));
  if (!file) throw Error(path + ": " + std::strerror(errno));
  std::string text;
  std::string block(1U << 16U, '\0');
  for (;;) {
    const std::size_t count = std::fread(block.data(), 1, block.size(), file.get());
    if (std::ferror(file.get()) != 0) throw Error(DisplayName(path) + ": " + std::strerror(errno));
    if (count == 0) return text;
    if (text.size() + count > kMaxInputBytes) {
      throw Error(DisplayName(path) + ": too large for one message (a stream needs --delimited)");
    }
    text.append(block, 0, count);
  }
}

std::string Decode(std::string_view text, Encoding encoding) {
  std::string bytes;
  std::string why_not_hex;
  switch (encoding) {
    case Encoding::kBinary:
      bytes = text;
      break;
    case Encoding::kHex:
      if (!ParseHex(text, bytes, why_not_hex)) throw Error("not hex: " + why_not_hex);
      break;
    case Encoding::kBase64:
      if (!ParseBase64(text, bytes)) throw Error("not base64");
      break;
    case Encoding::kAuto:
      if (!IsText(text)) {
        bytes = text;
      } else if (!ParseHex(text, bytes, why_not_hex) && !ParseBase64(text, bytes)) {
        throw Error("text that is neither hex (" + why_not_hex +
                    ") nor base64; if it is the message itself, say --from binary");
      }
      break;
  }
  return bytes;
}

std::string ReadBytes(const std::string& path, Encoding encoding) {
  const std::string text = ReadAll(path);
  try {
    return Decode(text, encoding);
  } catch (const Error& error) {
    throw Error(DisplayName(path) + ": " + error.what());
  }
}

std::string DisplayName(const std::string& path) { return path == "-" ? "standard input" : path; }

bool DelimitedReader::Next() {
  const std::int64_t start = stream_.ByteCount();
  // One for each message: it counts to 2 GiB only.
  google::protobuf::io::CodedInputStream in(&stream_);
  const void* data = nullptr;
  int available = 0;
  if (!in.GetDirectBufferPointer(&data, &available)) return false;
  int size = 0;
  if (!in.ReadVarintSizeAsInt(&size) || static_cast<std::size_t>(size) > kMaxMessageBytes) {
    throw Error(name_ + ": no length of a message at byte " + std::to_string(start) +
                " (is this a stream of delimited messages?)");
  }
  size_ = static_cast<std::size_t>(size);
  offset_ = start + in.CurrentPosition();
  in.ReadString(&bytes_, size);
  return true;
}

}  // namespace virtual_modem::inspect
