// virtual-modem-inspect: the command line, in sync with the manual page. Completion reads --help.
#include <fcntl.h>
#include <google/protobuf/stubs/logging.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <new>
#include <string>
#include <vector>

#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/show/terminal.h"

namespace virtual_modem::inspect {
namespace {

constexpr const char* kProgram = "virtual-modem-inspect";

// One line, whatever the input that it quotes holds.
int Fail(const std::string& why, Status status) {
  std::cout.exceptions(std::ios::goodbit);  // what was written before still belongs there
  std::cout.flush();
  std::cerr << kProgram << ": " << ForTerminal(why) << '\n';
  return status;
}

// A file that is opened must not become one of the standard streams.
bool StandardStreamsAreOpen() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) >= 0) continue;
    if (fd == STDOUT_FILENO) return false;
    open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDWR);
  }
  return true;
}

class CommandLine {
 public:
  CommandLine() {
    app_.require_subcommand(1);
    app_.fallthrough();  // --schema may stand after the subcommand
    app_.set_version_flag("--version", std::string(kProgram) + " " + VIRTUAL_MODEM_VERSION);
    app_.add_option("--schema", schema_,
                    "Descriptor set to use, instead of the installed one or that named by "
                    "VIRTUAL_MODEM_DESCRIPTOR_SET")
        ->type_name("FILE");
    AddDecode();
    AddLog();
    AddMask();
    AddEncode();
    AddIdentify();
    AddDescribe();
    AddList();
    AddDiff();
  }

  int Run(int argc, char** argv) {
    try {
      app_.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
      // --help and --version come this way too.
      if (error.get_exit_code() == 0) {
        app_.exit(error);
        std::cout.flush();
        return kOk;
      }
      const bool no_command = app_.get_subcommands().empty() && !app_.remaining().empty();
      throw UsageError(no_command ? "there is no command " + app_.remaining().front()
                                  : error.what());
    }
    Schema schema(schema_.empty() ? DefaultDescriptorSet() : schema_);
    Status status = kUsage;
    for (const CLI::App* command : app_.get_subcommands()) {
      status = runs_.at(command->get_name())(schema);
    }
    std::cout.flush();
    return status;
  }

 private:
  CLI::App* Add(const std::string& name, const std::string& what,
                std::function<Status(Schema&)> run) {
    runs_[name] = std::move(run);
    return app_.add_subcommand(name, what);
  }

  static void AddType(CLI::App* command, std::string& type) {
    command->add_option("type", type, "Message type, such as Dial")->required()->type_name("TYPE");
  }
  static void AddFile(CLI::App* command, std::string& file) {
    command->add_option("file", file, "Input; - or nothing is standard input")->type_name("FILE");
  }
  // Lets the option take these words only, which --help shows and completion offers.
  static CLI::Option* OneOf(CLI::Option* option, const std::vector<std::string>& words) {
    std::string list;
    for (const std::string& word : words) list += (list.empty() ? "" : "|") + word;
    const auto check = [words, list](const std::string& word) -> std::string {
      const bool found = std::find(words.begin(), words.end(), word) != words.end();
      return found ? "" : word + " is not one of " + list;
    };
    return option->type_name(list)->check(check);
  }
  // The encodings of these names.
  static CLI::Option* AddEncoding(CLI::App* command, const std::string& option, Encoding& encoding,
                                  const std::vector<std::string>& words, const std::string& what) {
    const auto set = [&encoding](const std::string& word) {
      static const std::map<std::string, Encoding> encodings{
          {"auto", Encoding::kAuto},     {"binary", Encoding::kBinary}, {"hex", Encoding::kHex},
          {"base64", Encoding::kBase64}, {"string", Encoding::kString}, {"array", Encoding::kArray},
          {"log", Encoding::kLog}};
      encoding = encodings.at(word);
    };
    return OneOf(command->add_option_function<std::string>(option, set, what), words);
  }
  static CLI::Option* AddFrom(CLI::App* command, Encoding& from) {
    return AddEncoding(command, "--from", from,
                       {"array", "auto", "base64", "binary", "hex", "log", "string"},
                       "Form of the input; auto finds out");
  }
  static void AddSource(CLI::App* command, Source& source) {
    AddFile(command, source.file);
    AddFrom(command, source.from);
    command
        ->add_option_function<std::string>(
            "--hex", [&source](const std::string& hex) { source.hex = hex; },
            "The bytes themselves, instead of a file")
        ->type_name("HEX")
        ->excludes("file")
        ->excludes("--from");
  }
  static void AddMasking(CLI::App* command, bool& mask, bool& trust_type) {
    CLI::Option* option = command->add_flag(
        "--redact", mask, "Mask subscriber data; refuse bytes that do not fit the type");
    command
        ->add_flag("--trust-type", trust_type,
                   "Mask bytes that do not fit the type all the same: what is another type's shows")
        ->needs(option);
  }

  void AddDecode() {
    CLI::App* command = Add("decode", "Print a message and what is wrong with it",
                            [this](Schema& schema) { return DecodeCommand(schema, decode_); });
    AddType(command, decode_.type);
    AddSource(command, decode_.source);
    command->add_flag("--json", decode_.json, "JSON; findings go to standard error");
    AddMasking(command, decode_.mask, decode_.trust_type);
    command->add_flag("--delimited", decode_.delimited,
                      "The input is a stream: messages, each preceded by its length as a varint");
  }

  void AddLog() {
    CLI::App* command = Add("log", "Show a capture or a log, a line each message",
                            [this](Schema& schema) { return LogCommand(schema, log_); });
    command
        ->add_option("file", log_.files,
                     "Captures or logs, the oldest first; - or nothing is standard input")
        ->type_name("FILE");
    command->add_option("--type", log_.types, "Only messages of this type; may be repeated")
        ->type_name("TYPE")
        ->allow_extra_args(false);
    command->add_option("--unit", log_.units, "Only messages of this unit; may be repeated")
        ->type_name("UNIT")
        ->allow_extra_args(false);
    OneOf(command->add_option("--kind", log_.kinds, "Only messages of this kind; may be repeated"),
          {"request", "response", "indication", "record"})
        ->allow_extra_args(false);
    command->add_option("--serial", log_.serials, "Only messages of this serial; may be repeated")
        ->type_name("NUMBER")
        ->allow_extra_args(false)
        ->check([](const std::string& word) -> std::string {
          std::int32_t number = 0;
          const char* end = word.data() + word.size();
          const auto result = std::from_chars(word.data(), end, number);
          return result.ec == std::errc() && result.ptr == end ? "" : word + " is not a number";
        });
    command
        ->add_option("--grep", log_.grep,
                     "Only messages with the value in that field; FIELD~TEXT for a part of it")
        ->type_name("FIELD=VALUE");
    command->add_flag("--incomplete", log_.incomplete,
                      "Only messages that lack something or break off");
    command->add_flag("--unknown", log_.unknown,
                      "Only messages with unknown fields or undeclared numbers");
    CLI::Option* pairs =
        command->add_flag("--pairs", log_.pairs, "Requests with their responses, by serial");
    CLI::Option* count =
        command->add_flag("--count", log_.count, "How many there are of each type and result")
            ->excludes(pairs);
    CLI::Option* json = command->add_flag("--json", log_.json, "JSON, one object a line");
    command
        ->add_flag("--diagram", log_.diagram,
                   "A Mermaid sequence diagram; with --pairs, responses tell how long they took")
        ->excludes(count)
        ->excludes(json);
    command->add_flag("--redact", log_.mask, "Mask subscriber data");
    command
        ->add_flag("--follow", log_.follow,
                   "Wait for more at the end of the last file, also after it was renamed")
        ->excludes(count);
    command->footer(
        "In a line, \"op 4\" is the frame's operation, which tells apart the uses of a type.\n"
        "\"#3\" is the serial of the message, \"-\" stands for none.");
  }

  void AddMask() {
    CLI::App* command = Add("mask", "Mask subscriber data in a capture or in one message",
                            [this](Schema& schema) { return RunMask(schema); });
    command
        ->add_option("files", words_,
                     "Captures, the oldest first, or a message with --type; file to write; - is "
                     "standard input or output")
        ->required()
        ->type_name("IN... OUT");
    CLI::Option* type =
        command->add_option("--type", mask_.type, "The input is a message of this type")
            ->type_name("TYPE");
    AddFrom(command, mask_.encoding)->needs(type);
    command
        ->add_flag("--trust-type", mask_.trust_type,
                   "Mask bytes that do not fit the type all the same: what is another type's shows")
        ->needs(type);
  }

  void AddEncode() {
    CLI::App* command = Add("encode", "Write a message given as text or JSON",
                            [this](Schema& schema) { return EncodeCommand(schema, encode_); });
    AddType(command, encode_.type);
    AddFile(command, encode_.file);
    AddEncoding(command, "--to", encode_.to, {"auto", "base64", "binary", "hex"},
                "Form of the output; auto: hex on a terminal, else binary");
    command->add_flag("--json", encode_.json, "The input is JSON");
    command->add_flag("--skeleton", encode_.skeleton,
                      "Print a message of the type as text, to be filled in and encoded");
    command->add_flag("--partial", encode_.partial, "Write it in spite of findings");
    CLI::Option* delimited = command->add_flag("--delimited", encode_.delimited,
                                               "Put its length before it, as in a stream");
    command
        ->add_option("--capture", encode_.capture,
                     "Write it into a capture of its own, which log and Wireshark read")
        ->type_name("FILE")
        ->excludes(delimited)
        ->excludes("--to");
  }

  void AddIdentify() {
    CLI::App* command = Add("identify", "Rank the types that bytes of an unknown type can be",
                            [this](Schema& schema) { return IdentifyCommand(schema, identify_); });
    AddSource(command, identify_.source);
    command->add_flag("--all", identify_.all, "Show the types that fit badly too");
  }

  void AddDescribe() {
    CLI::App* command = Add("describe", "Explain a message, enumeration, field, value or number",
                            [this](Schema& schema) { return DescribeCommand(schema, words_); });
    command
        ->add_option(
            "what", words_,
            "Such as Dial, Dial.clir, RADIO_E_SIM_BUSY, 11002, 0x2afa, fa55, Dial.clir=2 or "
            "cause 17; nothing: the units")
        ->type_name("WORDS");
  }

  void AddList() {
    CLI::App* command = Add("list", "List the messages, the enumerations, or what is in them",
                            [this](Schema& schema) { return ListCommand(schema, list_); });
    OneOf(command->add_option("what", list_, "messages (default), enums, fields or values"),
          {"messages", "enums", "fields", "values"});
  }

  void AddDiff() {
    CLI::App* command = Add("diff", "Compare two messages or two recordings field by field",
                            [this](Schema& schema) { return RunDiff(schema); });
    command
        ->add_option("what", words_,
                     "Two messages of a type, two streams of a type, or two captures or logs")
        ->required()
        ->type_name("[TYPE] LEFT RIGHT");
    command->add_flag("--delimited", diff_.delimited, "The two are streams of the type");
    AddFrom(command, diff_.from);
    AddMasking(command, diff_.mask, diff_.trust_type);
  }

  Status RunMask(Schema& schema) {
    if (words_.size() < 2) throw UsageError("mask takes IN... OUT");
    mask_.from.assign(words_.begin(), words_.end() - 1);
    mask_.to = words_.back();
    return MaskCommand(schema, mask_);
  }

  Status RunDiff(Schema& schema) {
    if (words_.size() < 2 || words_.size() > 3) throw UsageError("diff takes [TYPE] LEFT RIGHT");
    if (words_.size() == 3) diff_.type = words_.front();
    diff_.left = words_[words_.size() - 2];
    diff_.right = words_.back();
    return DiffCommand(schema, diff_);
  }

  CLI::App app_{
      "Explains messages of the virtual modem: decodes, encodes, identifies, describes, "
      "compares them.",
      kProgram};
  std::map<std::string, std::function<Status(Schema&)>> runs_;
  std::string schema_;
  DecodeOptions decode_;
  LogOptions log_;
  MaskOptions mask_;
  EncodeOptions encode_;
  IdentifyOptions identify_;
  DiffOptions diff_;
  std::vector<std::string> words_;  // of describe, diff and mask
  std::string list_ = "messages";
};

}  // namespace
}  // namespace virtual_modem::inspect

int main(int argc, char** argv) {
  namespace inspect = virtual_modem::inspect;
  std::ios::sync_with_stdio(false);
  if (!inspect::StandardStreamsAreOpen()) {
    return inspect::Fail("standard output is closed", inspect::kBadInput);
  }
  std::cout.exceptions(std::ios::badbit | std::ios::failbit);  // ends the program where it fails
  // The runtime's own lines about strings that are not UTF-8 and the like: findings say it better.
  google::protobuf::SetLogHandler(nullptr);
  try {
    return inspect::CommandLine().Run(argc, argv);
  } catch (const inspect::UsageError& error) {
    return inspect::Fail(std::string(error.what()) + " (see --help)", inspect::kUsage);
  } catch (const std::bad_alloc&) {
    return inspect::Fail("out of memory", inspect::kBadInput);
  } catch (const std::ios_base::failure&) {
    return inspect::Fail("cannot write to standard output", inspect::kBadInput);
  } catch (const std::exception& error) {
    return inspect::Fail(error.what(), inspect::kBadInput);
  }
}
