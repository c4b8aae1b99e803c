// virtual-modem-inspect: the command line, in sync with the manual page. Completion reads --help.
#include <fcntl.h>
#include <google/protobuf/stubs/logging.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "inspect/commands/commands.h"
#include "inspect/error.h"

namespace virtual_modem::inspect {
namespace {

constexpr const char* kProgram = "virtual-modem-inspect";

// One line, whatever the input that it quotes holds.
int Fail(const std::string& why, Status status) {
  std::cout.exceptions(std::ios::goodbit);  // what was written before still belongs there
  std::cout.flush();
  Note(why);
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
    const Status status = run_(schema, options_);
    std::cout.flush();
    return status;
  }

 private:
  CLI::App* Add(const std::string& name, const std::string& what,
                Status (*run)(Schema&, const Options&)) {
    return app_.add_subcommand(name, what)->callback([this, run] { run_ = run; });
  }

  void AddType(CLI::App* command) {
    command->add_option("type", options_.type, "Message type, such as Dial")
        ->required()
        ->type_name("TYPE");
  }
  void AddFile(CLI::App* command) {
    command->add_option("file", options_.source.file, "Input; - or nothing is standard input")
        ->type_name("FILE");
  }
  CLI::Option* AddWords(CLI::App* command, const std::string& name, const std::string& what,
                        const std::string& shown) {
    return command->add_option(name, options_.words, what)->type_name(shown);
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
      constexpr const char* kNames[] = {"auto",   "binary", "hex", "base64",
                                        "string", "array",  "log"};
      encoding = static_cast<Encoding>(std::find(kNames, std::end(kNames), word) - kNames);
    };
    return OneOf(command->add_option_function<std::string>(option, set, what), words);
  }
  CLI::Option* AddFrom(CLI::App* command) {
    return AddEncoding(command, "--from", options_.source.from,
                       {"array", "auto", "base64", "binary", "hex", "log", "string"},
                       "Form of the input; auto detects it");
  }
  void AddSource(CLI::App* command) {
    AddFile(command);
    AddFrom(command);
    const auto set = [this](const std::string& hex) { options_.source.hex = hex; };
    command
        ->add_option_function<std::string>("--hex", set, "The bytes themselves, instead of a file")
        ->type_name("HEX")
        ->excludes("file")
        ->excludes("--from");
  }
  CLI::Option* AddTrust(CLI::App* command) {
    return command->add_flag(
        "--trust-type", options_.trust_type,
        "Mask bytes that do not fit the type too; data of another type may then show");
  }
  void AddMasking(CLI::App* command) {
    CLI::Option* mask = command->add_flag(
        "--redact", options_.mask, "Mask subscriber data; refuse bytes that do not fit the type");
    AddTrust(command)->needs(mask);
  }

  void AddDecode() {
    CLI::App* command = Add("decode", "Print a message and what is wrong with it", DecodeCommand);
    AddType(command);
    AddSource(command);
    command->add_flag("--json", options_.json, "JSON; findings go to standard error");
    AddMasking(command);
    command->add_flag("--delimited", options_.delimited,
                      "The input is a stream: messages, each preceded by its length as a varint");
  }

  // An option of log that may be given several times.
  template <typename Value>
  static CLI::Option* AddFilter(CLI::App* command, const std::string& name, const std::string& what,
                                std::vector<Value>& values) {
    return command
        ->add_option("--" + name, values, "Only messages of this " + name + "; may be repeated")
        ->type_name(what)
        ->allow_extra_args(false);
  }

  void AddLog() {
    CLI::App* command = Add("log", "Show a capture or a log, one line per message", LogCommand);
    AddWords(command, "file", "Captures or logs, the oldest first; - or nothing is standard input",
             "FILE");
    AddFilter(command, "type", "TYPE", options_.types);
    AddFilter(command, "unit", "UNIT", options_.units);
    OneOf(AddFilter(command, "kind", "KIND", options_.kinds),
          {"request", "response", "indication", "record"});
    AddFilter(command, "serial", "NUMBER", options_.serials)->check([](const std::string& word) {
      std::int32_t number = 0;
      return CLI::detail::lexical_cast(word, number) ? "" : word + " is not a 32-bit number";
    });
    command
        ->add_option("--grep", options_.grep,
                     "Only messages with the value in that field; FIELD~TEXT for a part of it")
        ->type_name("FIELD=VALUE");
    command->add_flag("--incomplete", options_.incomplete,
                      "Only messages that are incomplete or malformed");
    command->add_flag("--unknown", options_.unknown,
                      "Only messages with unknown fields or undeclared numbers");
    CLI::Option* pairs =
        command->add_flag("--pairs", options_.pairs, "Requests with their responses, by serial");
    CLI::Option* count =
        command
            ->add_flag("--count", options_.count, "The number of messages of each type and result")
            ->excludes(pairs);
    CLI::Option* json = command->add_flag("--json", options_.json, "JSON, one object a line");
    command
        ->add_flag("--diagram", options_.diagram,
                   "A Mermaid sequence diagram; with --pairs, responses tell how long they took")
        ->excludes(count)
        ->excludes(json);
    command->add_flag("--redact", options_.mask, "Mask subscriber data");
    command
        ->add_flag("--follow", options_.follow,
                   "Wait for more at the end of the last file, also after it was renamed")
        ->excludes(count);
    command->footer(
        "In a line, \"op 4\" is the frame's operation, which tells apart the uses of a type.\n"
        "\"#3\" is the serial of the message, \"-\" stands for none.");
  }

  void AddMask() {
    CLI::App* command =
        Add("mask", "Mask subscriber data in a capture or in one message", MaskCommand);
    AddWords(command, "files",
             "Captures, the oldest first, or a message with --type; file to write; - is standard "
             "input or output",
             "IN... OUT")
        ->required();
    CLI::Option* type =
        command->add_option("--type", options_.type, "The input is a message of this type")
            ->type_name("TYPE");
    AddFrom(command)->needs(type);
    AddTrust(command)->needs(type);
  }

  void AddEncode() {
    CLI::App* command = Add("encode", "Write a message given as text or JSON", EncodeCommand);
    AddType(command);
    AddFile(command);
    AddEncoding(command, "--to", options_.to, {"auto", "base64", "binary", "hex"},
                "Form of the output; auto: hex on a terminal, else binary");
    command->add_flag("--json", options_.json, "The input is JSON");
    command->add_flag("--skeleton", options_.skeleton,
                      "Print a message of the type as text, to be filled in and encoded");
    command->add_flag("--partial", options_.partial, "Write it in spite of findings");
    CLI::Option* delimited = command->add_flag("--delimited", options_.delimited,
                                               "Put its length before it, as in a stream");
    command
        ->add_option("--capture", options_.capture,
                     "Write it into a capture of its own, which log and Wireshark read")
        ->type_name("FILE")
        ->excludes(delimited)
        ->excludes("--to");
  }

  void AddIdentify() {
    CLI::App* command =
        Add("identify", "Rank the types that bytes of an unknown type can be", IdentifyCommand);
    AddSource(command);
    command->add_flag("--all", options_.all, "Show the types that fit badly too");
  }

  void AddDescribe() {
    AddWords(
        Add("describe", "Explain a message, enumeration, field, value or number", DescribeCommand),
        "what",
        "Such as Dial, Dial.clir, RADIO_E_SIM_BUSY, 11002, 0x2afa, Dial.clir=2 or cause 17; "
        "nothing: the units",
        "WORDS");
  }

  void AddList() {
    CLI::App* command =
        Add("list", "List the messages, the enumerations, or what is in them", ListCommand);
    OneOf(command->add_option("what", options_.list, "messages (default), enums, fields or values"),
          {"messages", "enums", "fields", "values"});
  }

  void AddDiff() {
    CLI::App* command =
        Add("diff", "Compare two messages or two recordings field by field", DiffCommand);
    AddWords(command, "what", "Two messages of a type, or two captures or logs",
             "[TYPE] LEFT RIGHT")
        ->required();
    AddFrom(command);
    AddMasking(command);
  }

  CLI::App app_{
      "Explains messages of the virtual modem: decodes, encodes, identifies, describes, "
      "compares them.",
      kProgram};
  Status (*run_)(Schema&, const Options&) = nullptr;  // of the command that was given
  std::string schema_;
  Options options_;
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
