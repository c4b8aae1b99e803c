// The subcommands. Each writes to standard output, throws Error for bad input and returns the exit
// status.
#pragma once

#include <cstdint>
#include <string>
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
  bool redact = false;
  bool trust_type = false;  // redact bytes that do not fit the type, too
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

struct LogOptions {
  std::string file = "-";
  std::vector<std::string> types;
  std::vector<std::string> units;
  std::vector<std::string> kinds;
  std::vector<std::int32_t> serials;
  std::string grep;
  bool incomplete = false;
  bool unknown = false;
  bool pairs = false;
  bool count = false;
  bool json = false;
  bool redact = false;
  bool follow = false;
};
Status LogCommand(Schema& schema, const LogOptions& options);

struct MaskOptions {
  std::string from;
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

// words: a name, a number, both, or bytes of the wire, in the words of a log; none for the units.
Status DescribeCommand(const Schema& schema, const std::vector<std::string>& words);

// what: "messages" or "enums".
Status ListCommand(const Schema& schema, const std::string& what);

struct DiffOptions {
  std::string type;  // empty for two captures or logs
  std::string left;
  std::string right;
  Encoding from = Encoding::kAuto;
  bool redact = false;
  bool trust_type = false;
  bool delimited = false;
};
Status DiffCommand(Schema& schema, const DiffOptions& options);

}  // namespace virtual_modem::inspect
