// diff: two messages of one type, field by field.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/printer.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/util/message_differencer.h>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "inspect/commands.h"
#include "inspect/error.h"
#include "inspect/findings.h"
#include "inspect/redact.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::util::MessageDifferencer;

// Tells which fields differ, but of subscriber data only that it does.
class RedactingReporter : public MessageDifferencer::StreamReporter {
 public:
  RedactingReporter(const Schema& schema, google::protobuf::io::Printer* printer)
      : StreamReporter(printer), schema_(schema) {}

 protected:
  void PrintValue(const Message& message,
                  const std::vector<MessageDifferencer::SpecificField>& path,
                  bool left_side) override {
    const FieldDescriptor* field = path.back().field;
    if (field == nullptr || schema_.IsSubscriberData(*field)) {
      Print("(redacted)");
    } else if (field->message_type() != nullptr) {
      const std::unique_ptr<Message> masked(message.New());
      masked->CopyFrom(message);
      Redact(schema_, *masked);
      StreamReporter::PrintValue(*masked, path, left_side);
    } else {
      StreamReporter::PrintValue(message, path, left_side);
    }
  }
  void PrintUnknownFieldValue(const google::protobuf::UnknownField* /*field*/) override {
    Print("(redacted)");
  }

 private:
  const Schema& schema_;
};

std::unique_ptr<Message> Read(Schema& schema, const std::string& path, const DiffOptions& options) {
  std::unique_ptr<Message> message = schema.NewMessage(schema.GetMessage(options.type));
  const Findings findings = ParseAndCheck(ReadBytes(path, options.from), *message);
  if (findings.count(Findings::kMalformed) != 0) {
    throw Error(DisplayName(path) + ": not a valid " + options.type + " (" + findings.Summary() +
                ")");
  }
  return message;
}

}  // namespace

Status DiffCommand(Schema& schema, const DiffOptions& options) {
  if (options.redact) schema.RequireSubscriberData();
  if (options.left == "-" && options.right == "-") throw Error("only one side can be read from -");
  const std::unique_ptr<Message> left = Read(schema, options.left, options);
  const std::unique_ptr<Message> right = Read(schema, options.right, options);
  std::string report;
  bool equal = false;
  {
    google::protobuf::io::StringOutputStream stream(&report);
    google::protobuf::io::Printer printer(&stream, '$');
    MessageDifferencer::StreamReporter plain(&printer);
    RedactingReporter redacting(schema, &printer);
    MessageDifferencer differencer;
    differencer.ReportDifferencesTo(options.redact ? &redacting : &plain);
    equal = differencer.Compare(*left, *right);
  }
  std::cout << report;
  return equal ? kOk : kDifferent;
}

}  // namespace virtual_modem::inspect
