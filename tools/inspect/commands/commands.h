// The subcommands. Each writes to standard output, throws Error for bad input, UsageError for what
// the command line has wrong, and returns the exit status.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/read/input.h"
#include "inspect/schema/schema.h"

namespace virtual_modem::inspect {

// Exit statuses, documented in the manual page.
enum Status : std::uint8_t {
  kOk = 0,
  kBadInput = 1,
  kUsage = 2,
  kDifferent = 3,
};

struct DecodeOptions {
  std::string type;
  Source source;
  bool json = false;
  bool mask = false;
  bool trust_type = false;  // mask bytes that do not fit the type, too
  bool delimited = false;
};
Status DecodeCommand(Schema& schema, const DecodeOptions& options);

struct EncodeOptions {
  std::string type;
  std::string file = "-";
  Encoding to = Encoding::kAuto;  // kAuto: hex on a terminal, else binary
  std::string capture;  // file to write instead, framed as a capture has it; empty for none
  bool json = false;
  bool partial = false;
  bool delimited = false;
  bool skeleton = false;
};
Status EncodeCommand(Schema& schema, const EncodeOptions& options);

// The encoded form of a message written as JSON or in the text format, required fields present or
// not. The message gives the type; its content is dropped. Throws Error.
std::string EncodeMessage(std::string_view source, bool json, Message& message);

struct LogOptions {
  std::vector<std::string> files{"-"};  // one after another
  std::vector<std::string> types;
  std::vector<std::string> units;
  std::vector<std::string> kinds;
  std::vector<std::int32_t> serials;
  std::string grep;
  bool incomplete = false;
  bool unknown = false;
  bool pairs = false;
  bool count = false;
  bool diagram = false;
  bool json = false;
  bool mask = false;
  bool follow = false;
};
Status LogCommand(Schema& schema, const LogOptions& options);

struct MaskOptions {
  std::vector<std::string> from;  // one message, or captures one after another
  std::string to;
  std::string type;  // of the one message, empty for a capture
  Encoding encoding = Encoding::kAuto;
  bool trust_type = false;
};
Status MaskCommand(Schema& schema, const MaskOptions& options);

struct IdentifyOptions {
  Source source;
  bool all = false;
};
Status IdentifyCommand(Schema& schema, const IdentifyOptions& options);

// words: a name, a number, both, or bytes of the wire, as logs write them; none for the units.
Status DescribeCommand(const Schema& schema, const std::vector<std::string>& words);

// what: "messages", "enums", "fields" or "values".
Status ListCommand(const Schema& schema, const std::string& what);

struct DiffOptions {
  std::string type;  // empty for two captures or logs
  std::string left;
  std::string right;
  Encoding from = Encoding::kAuto;
  bool mask = false;
  bool trust_type = false;
  bool delimited = false;
};
Status DiffCommand(Schema& schema, const DiffOptions& options);

}  // namespace virtual_modem::inspect
