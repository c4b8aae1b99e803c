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

// What the command line asks for. Each command looks at what is its own.
struct Options {
  std::string type;
  Source source;
  std::vector<std::string> words;  // files of log, mask and diff; what to describe
  std::string list = "messages";   // or enums, fields, values
  Encoding to = Encoding::kAuto;   // kAuto: hex on a terminal, else binary
  std::string capture;             // file to write, framed as a capture has it; empty for none
  bool all = false;
  bool delimited = false;
  bool json = false;
  bool mask = false;
  bool partial = false;
  bool skeleton = false;
  bool trust_type = false;  // mask bytes that do not fit the type, too

  // What log shows, of which messages.
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
  bool follow = false;
};

Status DecodeCommand(Schema& schema, const Options& options);
Status EncodeCommand(Schema& schema, const Options& options);
Status LogCommand(Schema& schema, const Options& options);
Status MaskCommand(Schema& schema, const Options& options);
Status IdentifyCommand(Schema& schema, const Options& options);
Status DescribeCommand(Schema& schema, const Options& options);
Status ListCommand(Schema& schema, const Options& options);
Status DiffCommand(Schema& schema, const Options& options);

// The encoded form of a message written as JSON or in the text format, required fields present or
// not. The message gives the type; its content is dropped. Throws Error.
std::string EncodeMessage(std::string_view source, bool json, Message& message);

}  // namespace virtual_modem::inspect
