// virtual-modem-inspect: the command line. Keep --help, the manual page and the completion in sync.
#include <google/protobuf/stubs/logging.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <new>
#include <string>

#include "inspect/commands.h"
#include "inspect/error.h"

namespace virtual_modem::inspect {
namespace {

constexpr const char* kProgram = "virtual-modem-inspect";

// One line, whatever the input that it quotes holds.
int Fail(std::string why, Status status) {
  std::replace_if(
      why.begin(), why.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
  std::cout.flush();
  std::cerr << kProgram << ": " << why << '\n';
  return status;
}

class CommandLine {
 public:
  CommandLine() {
    app_.require_subcommand(1);
    app_.fallthrough();  // --schema may stand behind the subcommand
    app_.set_version_flag("--version", std::string(kProgram) + " " + VIRTUAL_MODEM_VERSION);
    app_.add_option("--schema", schema_,
                    "Descriptor set to use, instead of the installed one or that named by "
                    "VIRTUAL_MODEM_DESCRIPTOR_SET")
        ->type_name("FILE");
    AddDecode();
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
      if (error.get_exit_code() == 0) return app_.exit(error);
      const bool no_command = app_.get_subcommands().empty() && !app_.remaining().empty();
      return Fail((no_command ? "there is no command " + app_.remaining().front() : error.what()) +
                      " (see --help)",
                  kUsage);
    }
    Schema schema(schema_.empty() ? DefaultDescriptorSet() : schema_);
    Status status = kUsage;
    for (const CLI::App* command : app_.get_subcommands()) {
      status = runs_.at(command->get_name())(schema);
    }
    std::cout.flush();
    return std::cout ? status : Fail("cannot write to standard output", kBadInput);
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
  static void AddEncoding(CLI::App* command, const std::string& option, Encoding& encoding,
                          const std::string& what) {
    // Turns the word into the number that CLI11 reads an enumeration from.
    const auto to_number = [](std::string& word) -> std::string {
      static const std::map<std::string, Encoding> kNames{{"auto", Encoding::kAuto},
                                                          {"binary", Encoding::kBinary},
                                                          {"hex", Encoding::kHex},
                                                          {"base64", Encoding::kBase64}};
      const auto found = kNames.find(word);
      if (found == kNames.end()) return word + " is not one of auto, binary, hex, base64";
      word = std::to_string(static_cast<int>(found->second));
      return "";
    };
    command->add_option(option, encoding, what)
        ->type_name("auto|binary|hex|base64")
        ->transform(CLI::Validator(to_number, ""));
  }
  static void AddFrom(CLI::App* command, Encoding& from) {
    AddEncoding(command, "--from", from, "Form of the input; auto finds out");
  }

  void AddDecode() {
    CLI::App* command = Add("decode", "Print a message and what is wrong with it",
                            [this](Schema& schema) { return DecodeCommand(schema, decode_); });
    AddType(command, decode_.type);
    AddFile(command, decode_.file);
    AddFrom(command, decode_.from);
    command->add_flag("--json", decode_.json, "JSON; findings go to standard error");
    command->add_flag("--redact", decode_.redact, "Mask subscriber data");
    command->add_flag("--delimited", decode_.delimited,
                      "The input is a stream: messages, each preceded by its length as a varint");
  }

  void AddEncode() {
    CLI::App* command = Add("encode", "Write a message given as text or JSON",
                            [this](Schema& schema) { return EncodeCommand(schema, encode_); });
    AddType(command, encode_.type);
    AddFile(command, encode_.file);
    AddEncoding(command, "--to", encode_.to,
                "Form of the output; auto: hex on a terminal, else binary");
    command->add_flag("--json", encode_.json, "The input is JSON");
    command->add_flag("--partial", encode_.partial, "Write it in spite of findings");
    command->add_flag("--delimited", encode_.delimited, "Put its length before it, as in a stream");
  }

  void AddIdentify() {
    CLI::App* command = Add("identify", "Rank the types that bytes of an unknown type can be",
                            [this](Schema& schema) { return IdentifyCommand(schema, identify_); });
    AddFile(command, identify_.file);
    AddFrom(command, identify_.from);
    command->add_flag("--all", identify_.all, "Show the types that fit badly too");
  }

  void AddDescribe() {
    CLI::App* command = Add("describe", "Explain a message, enumeration, field, value or number",
                            [this](Schema& schema) { return DescribeCommand(schema, what_); });
    command
        ->add_option("what", what_,
                     "Such as Dial, Dial.clir, Clir, RADIO_E_SIM_BUSY or 11002; nothing: the units")
        ->type_name("NAME|NUMBER");
  }

  void AddList() {
    CLI::App* command = Add("list", "List the messages, the enumerations, or what is in them",
                            [this](Schema& schema) { return ListCommand(schema, list_); });
    command->add_option("what", list_, "messages (default), enums, fields or values")
        ->type_name("messages|enums|fields|values")
        ->check(CLI::IsMember({"messages", "enums", "fields", "values"}).description(""));
  }

  void AddDiff() {
    CLI::App* command = Add("diff", "Compare two messages field by field",
                            [this](Schema& schema) { return DiffCommand(schema, diff_); });
    AddType(command, diff_.type);
    command->add_option("left", diff_.left, "One message")->required()->type_name("FILE");
    command->add_option("right", diff_.right, "The other message")->required()->type_name("FILE");
    AddFrom(command, diff_.from);
    command->add_flag("--redact", diff_.redact, "Mask subscriber data");
  }

  CLI::App app_{
      "Explains messages of the virtual modem: decodes, encodes, identifies, describes, "
      "compares them.",
      kProgram};
  std::map<std::string, std::function<Status(Schema&)>> runs_;
  std::string schema_;
  DecodeOptions decode_;
  EncodeOptions encode_;
  IdentifyOptions identify_;
  DiffOptions diff_;
  std::string what_;
  std::string list_ = "messages";
};

}  // namespace
}  // namespace virtual_modem::inspect

int main(int argc, char** argv) {
  namespace inspect = virtual_modem::inspect;
  std::ios::sync_with_stdio(false);
  // The runtime's own lines about strings that are not UTF-8 and the like: findings say it better.
  google::protobuf::SetLogHandler(nullptr);
  try {
    return inspect::CommandLine().Run(argc, argv);
  } catch (const std::bad_alloc&) {
    return inspect::Fail("out of memory", inspect::kBadInput);
  } catch (const std::exception& error) {
    return inspect::Fail(error.what(), inspect::kBadInput);
  }
}
