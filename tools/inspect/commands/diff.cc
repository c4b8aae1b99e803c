// diff: two messages of one type, field by field, or two recordings, message by message.
#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/printer.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/util/message_differencer.h>
#include <unistd.h>

#include <iostream>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/examine/findings.h"
#include "inspect/examine/glance.h"
#include "inspect/read/recording.h"
#include "text/mask.h"

namespace virtual_modem::inspect {
namespace {

using google::protobuf::util::MessageDifferencer;

// Tells which fields differ; with mask, of subscriber data only that it does.
class Reporter : public MessageDifferencer::StreamReporter {
 public:
  Reporter(const Schema& schema, bool mask, google::protobuf::io::Printer* printer)
      : StreamReporter(printer), schema_(schema), mask_(mask) {}

 protected:
  void PrintValue(const Message& message,
                  const std::vector<MessageDifferencer::SpecificField>& path,
                  bool left_side) override {
    const FieldDescriptor* field = path.back().field;
    if (mask_ && (field == nullptr || schema_.IsSubscriberData(*field))) {
      Print("(masked)");
    } else if (mask_ && field->message_type() != nullptr) {
      const std::unique_ptr<Message> masked(message.New());
      std::string bytes;
      text::AppendMasked(schema_.tables(),
                         schema_.FindType(message.GetDescriptor()->full_name())->index,
                         message.SerializePartialAsString(), text::Show::kMasked, bytes);
      masked->ParsePartialFromString(bytes);
      StreamReporter::PrintValue(*masked, path, left_side);
    } else {
      StreamReporter::PrintValue(message, path, left_side);
    }
  }

 private:
  const Schema& schema_;
  const bool mask_;
};

// Appends what differs; true when nothing does.
bool Compare(const Schema& schema, const Message& left, const Message& right, bool mask,
             std::string& report) {
  google::protobuf::io::StringOutputStream stream(&report);
  google::protobuf::io::Printer printer(&stream, '$');
  Reporter reporter(schema, mask, &printer);
  MessageDifferencer differencer;
  differencer.ReportDifferencesTo(&reporter);
  return differencer.Compare(left, right);
}

std::unique_ptr<Message> Read(Schema& schema, const std::string& type, const std::string& path,
                              const Options& options) {
  std::unique_ptr<Message> message = schema.NewMessage(*schema.GetType(type).type);
  const Findings findings = ParseAndCheck(schema, ReadBytes({path, options.source.from}), *message);
  const bool malformed = findings.malformed();
  if (malformed || (options.mask && !options.trust_type && findings.misfit())) {
    throw Error(DisplayName(path) + ": not " +
                (malformed ? "a valid " : "shown, as it does not fit ") + type + " (" +
                findings.Summary() + ")" + (malformed ? "" : "; --trust-type compares it anyway"));
  }
  return message;
}

// A message of a recording, which its type, its serial and how many such there were before it tell
// from the others.
struct Recorded {
  std::string title;
  const TypeInfo* type;
  std::int64_t number;
  std::string bytes;
  bool whole;
};

// Calls take(key, recorded) for each message of a capture or a log.
template <typename Take>
void ReadMessages(const Schema& schema, const std::string& path, const Take& take) {
  std::unordered_map<std::string, int> seen;
  Recording recording(schema, {path});
  Record record;
  while (recording.Next(record)) {
    std::string title(record.name.empty() ? "?" : record.name);
    bool whole = record.problem.empty();
    if (record.type != nullptr) {
      const Glance glance = TakeGlance(schema, *record.type, record.bytes, nullptr);
      if (glance.serial) title += " #" + std::to_string(*glance.serial);
      whole = whole && !glance.outcome.malformed();
    }
    std::string key = title + (record.direction == Direction::kToModem ? ">" : "<");
    key += std::to_string(seen[key]++);
    take(key, Recorded{title, record.type, record.number, std::string(record.bytes), whole});
  }
  recording.RequireMessages(" (two messages need their TYPE)");
}

// How two messages of one place differ, as far as it may be shown.
std::string Difference(Schema& schema, const Recorded& left, const Recorded& right,
                       const Options& options) {
  std::string report;
  if (left.bytes == right.bytes) {
    if (!left.whole || !right.whole) report = "not comparable: cut or malformed\n";
    return report;
  }
  if (left.type == nullptr) return "modified: bytes of a type that the schema does not have\n";
  const std::unique_ptr<Message> a = schema.NewMessage(*left.type->type);
  const std::unique_ptr<Message> b = schema.NewMessage(*left.type->type);
  const Findings in_left = ParseAndCheck(schema, left.bytes, *a);
  const Findings in_right = ParseAndCheck(schema, right.bytes, *b);
  if (options.mask && !options.trust_type && (in_left.misfit() || in_right.misfit())) {
    return "modified: (masked, as the bytes do not fit the type)\n";
  }
  if (Compare(schema, *a, *b, options.mask, report)) {
    report = "modified: other bytes of the same fields\n";
  }
  return report;
}

Status DiffRecordings(Schema& schema, const std::string& left_path, const std::string& right_path,
                      const Options& options) {
  std::unordered_map<std::string, Recorded> lefts;
  std::vector<std::string> order;
  ReadMessages(schema, left_path, [&](const std::string& key, Recorded recorded) {
    lefts.emplace(key, std::move(recorded));
    order.push_back(key);
  });
  bool equal = true;
  ReadMessages(schema, right_path, [&](const std::string& key, const Recorded& right) {
    const auto left = lefts.find(key);
    if (left == lefts.end()) {
      std::cout << "# only right: " << right.title << ", message " << right.number << '\n';
      equal = false;
      return;
    }
    const std::string report = Difference(schema, left->second, right, options);
    if (!report.empty()) {
      std::cout << "# " << right.title << ", message " << left->second.number << " and "
                << right.number << '\n'
                << report;
      equal = false;
    }
    lefts.erase(left);
  });
  for (const std::string& key : order) {
    const auto left = lefts.find(key);
    if (left == lefts.end()) continue;
    std::cout << "# only left: " << left->second.title << ", message " << left->second.number
              << '\n';
    equal = false;
  }
  return equal ? kOk : kDifferent;
}

}  // namespace

Status DiffCommand(Schema& schema, const Options& options) {
  const std::size_t count = options.words.size();
  if (count < 2 || count > 3) throw UsageError("diff takes [TYPE] LEFT RIGHT");
  const std::string& left_path = options.words[count - 2];
  const std::string& right_path = options.words[count - 1];
  if (options.mask) schema.RequireSubscriberData();
  if (left_path == "-" && right_path == "-") throw UsageError("only one side can be read from -");
  if (count == 2) {
    if (options.source.from != Encoding::kAuto) {
      throw UsageError("--from is for two messages of a type");
    }
    if (access(left_path.c_str(), F_OK) != 0 && schema.FindType(left_path) != nullptr) {
      throw UsageError("to compare two messages of type " + left_path +
                       ", name two files: " + left_path + " LEFT RIGHT");
    }
    return DiffRecordings(schema, left_path, right_path, options);
  }
  const std::string& type = options.words.front();
  const std::unique_ptr<Message> left = Read(schema, type, left_path, options);
  const std::unique_ptr<Message> right = Read(schema, type, right_path, options);
  std::string report;
  const bool equal = Compare(schema, *left, *right, options.mask, report);
  std::cout << report;
  return equal ? kOk : kDifferent;
}

}  // namespace virtual_modem::inspect
