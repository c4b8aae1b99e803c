// log: a capture or a log, one line a message, a pair or a count.
#include <algorithm>
#include <array>
#include <ctime>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "inspect/commands/commands.h"
#include "inspect/error.h"
#include "inspect/examine/glance.h"
#include "inspect/examine/pairs.h"
#include "inspect/read/traffic.h"
#include "inspect/show/json.h"
#include "inspect/show/output.h"
#include "inspect/show/printer.h"
#include "inspect/show/terminal.h"

namespace virtual_modem::inspect {
namespace {

// Appends the last digits of a number, zeros before it included.
void AppendDigits(std::string& to, std::int64_t number, int digits) {
  std::array<char, 9> text;
  for (int i = digits; i-- > 0; number /= 10) {
    text.at(static_cast<std::size_t>(i)) = static_cast<char>('0' + number % 10);
  }
  to.append(text.data(), static_cast<std::size_t>(digits));
}

// Times of captures in words.
class Clock {
 public:
  // "11-21 18:07:01.123456", local time, as Android's log has it; a log's own time as it is.
  std::string_view Local(const Record& record) {
    if (!record.time_text.empty()) return record.time_text;
    const std::int64_t second = record.time / 1'000'000'000;
    // Converting is slow, and most messages share their minute with the one before.
    if (second / 60 != minute_) {
      minute_ = second / 60;
      const std::time_t time = second;
      std::tm parts{};
      localtime_r(&time, &parts);
      std::array<char, 32> text{};
      std::strftime(text.data(), text.size(), "%m-%d %H:%M:", &parts);
      prefix_ = text.data();
    }
    text_ = prefix_;
    AppendDigits(text_, second % 60, 2);
    text_ += '.';
    AppendDigits(text_, record.time % 1'000'000'000 / 1000, 6);
    return text_;
  }

  // "2026-11-21T18:07:01.123456Z".
  static std::string Utc(const Record& record) {
    if (!record.time_text.empty()) return std::string(record.time_text);
    const std::time_t time = record.time / 1'000'000'000;
    std::tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S.", &parts);
    std::string utc = text.data();
    AppendDigits(utc, record.time % 1'000'000'000 / 1000, 6);
    return utc + "Z";
  }

 private:
  std::int64_t minute_ = -1;
  std::string prefix_;
  std::string text_;
};

class Filter {
 public:
  Filter(const Schema& schema, const LogOptions& options) : options_(options) {
    for (const std::string& name : options.types) types_.push_back(&schema.GetMessage(name));
    std::vector<std::string> units;
    for (const TypeInfo& type : schema.types()) units.push_back(type.unit);
    for (const std::string& unit : options.units) {
      if (std::find(units.begin(), units.end(), unit) == units.end()) {
        throw Error("there is no unit " + unit + DidYouMean(unit, units));
      }
    }
    if (!options.grep.empty()) condition_.emplace(schema, options.grep);
  }

  const FieldCondition* condition() const { return condition_ ? &*condition_ : nullptr; }

  bool Passes(const Record& record, const Glance& glance) const {
    const auto among = [](const auto& list, const auto& value) {
      return list.empty() || std::find(list.begin(), list.end(), value) != list.end();
    };
    const text::Outcome& outcome = glance.outcome;
    const bool broken = !record.problem.empty();
    if (record.type == nullptr) {
      return types_.empty() && options_.units.empty() && options_.kinds.empty() &&
             options_.serials.empty() && options_.grep.empty() && !options_.unknown;
    }
    if (!among(types_, record.type->type) || !among(options_.units, record.type->unit) ||
        !among(options_.kinds, KindName(record.type->kind)) || !glance.has_field) {
      return false;
    }
    if (!options_.serials.empty() && (!glance.serial || !among(options_.serials, *glance.serial))) {
      return false;
    }
    const bool incomplete = broken || !outcome.acceptable();
    const bool unknown = outcome.unknown + outcome.undeclared + outcome.wrong_type != 0;
    if (!options_.incomplete && !options_.unknown) return true;
    return (options_.incomplete && incomplete) || (options_.unknown && unknown);
  }

 private:
  const LogOptions& options_;
  std::vector<const Descriptor*> types_;
  std::optional<FieldCondition> condition_;
};

// What is made of the messages.
class Log {
 public:
  Log(Schema& schema, const LogOptions& options, Output& out)
      : schema_(schema),
        options_(options),
        out_(out),
        filter_(schema, options),
        printer_(schema, {options.json, options.redact, Misfit::kShape, true}, out),
        pairing_([this](PairKind kind, const Half* request, const Half* response) {
          ShowPair(kind, request, response);
        }) {}

  void Take(const Record& record) {
    ++messages_;
    Glance glance;
    if (record.type != nullptr) {
      glance = TakeGlance(schema_, *record.type, record.bytes, filter_.condition());
    }
    const bool passes = filter_.Passes(record, glance);
    if (options_.pairs) {
      TakeHalf(record, glance, passes);
    } else if (!passes) {
      return;
    } else if (options_.count) {
      ++counts_[{record.type != nullptr ? std::string(record.name) : "(unreadable)", glance.error}];
    } else if (options_.json) {
      ShowJson(record, glance);
    } else {
      ShowLine(record, glance);
    }
  }

  void Finish() {
    if (options_.pairs) {
      pairing_.Finish();
      ShowTotals();
    }
    for (const auto& [key, count] : counts_) ShowCount(key.first, key.second, count);
  }

  std::int64_t messages() const { return messages_; }

 private:
  void ShowLine(const Record& record, const Glance& glance) {
    out_.Append(clock_.Local(record))
        .Append(record.direction == Direction::kToModem ? " > " : " < ");
    out_.Append(record.name.empty() ? std::string_view("?") : record.name);
    if (record.operation != 0) out_.Append(" op ").Append(record.operation);
    if (glance.serial) {
      out_.Append(" #").Append(*glance.serial);
    } else {
      out_.Append(" -");
    }
    out_.Append(" ").Append(static_cast<std::int64_t>(record.bytes.size())).Append(" B ");
    std::string remarks = record.problem;
    if (record.type != nullptr) {
      const Findings findings = printer_.Print(IndexOf(record), record.bytes);
      for (const std::string& text : findings.texts()) {
        remarks += (remarks.empty() ? "" : "; ") + text;
      }
    }
    if (!remarks.empty()) out_.Append(" # ").Append(remarks);
    out_.Append("\n");
  }

  void ShowJson(const Record& record, const Glance& glance) {
    out_.Append("{\"time\":").Append(JsonTime(Clock::Utc(record))).Append(",\"direction\":\"");
    out_.Append(record.direction == Direction::kToModem ? "to modem" : "to telephony").Append("\"");
    if (!record.name.empty()) out_.Append(",\"type\":\"").Append(record.name).Append("\"");
    if (record.type != nullptr) {
      out_.Append(",\"unit\":\"").Append(record.type->unit).Append("\",\"kind\":\"");
      out_.Append(KindName(record.type->kind)).Append("\"");
    }
    if (record.operation != 0) out_.Append(",\"operation\":").Append(record.operation);
    if (glance.serial) out_.Append(",\"serial\":").Append(*glance.serial);
    out_.Append(",\"size\":").Append(static_cast<std::int64_t>(record.bytes.size()));
    std::vector<std::string> findings;
    if (!record.problem.empty()) findings.push_back(record.problem);
    if (record.type != nullptr) {
      out_.Append(",\"message\":");
      const std::vector<std::string> texts = printer_.Print(IndexOf(record), record.bytes).texts();
      findings.insert(findings.end(), texts.begin(), texts.end());
    }
    if (!findings.empty()) {
      std::string list;
      for (const std::string& text : findings) {
        if (!list.empty()) list += ',';
        AppendJsonString(text, list);
      }
      out_.Append(",\"findings\":[").Append(list).Append("]");
    }
    out_.Append("}\n");
  }

  void TakeHalf(const Record& record, const Glance& glance, bool passes) {
    if (record.type == nullptr || !glance.serial) return;
    const bool request = record.type->kind == Kind::kRequest;
    if (!request && record.type->kind != Kind::kResponse) return;
    Half half;
    half.number = record.number;
    half.time = record.time;
    half.time_text = options_.json ? Clock::Utc(record) : std::string(clock_.Local(record));
    half.type = record.name;
    half.error = glance.error;
    half.serial = *glance.serial;
    half.direction = record.direction;
    half.wanted = passes;
    if (request) {
      pairing_.Request(std::move(half));
    } else {
      pairing_.Response(half);
    }
  }

  void ShowPair(PairKind kind, const Half* request, const Half* response) {
    const bool by_response = request == nullptr || kind == PairKind::kAnsweredAgain;
    const Half& first = by_response ? *response : *request;
    if (!(request != nullptr && request->wanted) && (response == nullptr || !response->wanted))
      return;
    ++pairs_.at(static_cast<std::size_t>(kind));
    const bool timed = kind == PairKind::kAnswered && request != nullptr && response != nullptr &&
                       request->time != kNoTime && response->time != kNoTime;
    const std::int64_t latency = timed ? response->time - request->time : 0;
    if (timed) {
      ++timed_;
      latency_sum_ += latency;
      longest_ = std::max(longest_, latency);
    }
    constexpr std::array<const char*, 4> kProblems{"", "no response", "answered again",
                                                   "no request"};
    const char* problem = kProblems.at(static_cast<std::size_t>(kind));
    if (options_.json) {
      out_.Append("{\"time\":").Append(JsonTime(first.time_text)).Append(",\"serial\":");
      out_.Append(first.serial);
      if (request != nullptr) out_.Append(",\"request\":\"").Append(request->type).Append("\"");
      if (response != nullptr) {
        out_.Append(",\"response\":\"").Append(response->type).Append("\"");
        if (!response->error.empty())
          out_.Append(",\"error\":\"").Append(response->error).Append("\"");
      }
      if (timed) {
        out_.Append(",\"latency_ms\":").Append(Milliseconds(latency));
      } else if (kind != PairKind::kAnswered) {
        out_.Append(",\"problem\":\"").Append(problem).Append("\"");
      }
      out_.Append("}\n");
      return;
    }
    out_.Append(first.time_text).Append(" #").Append(first.serial).Append(" ");
    if (request != nullptr) out_.Append(request->type).Append(response != nullptr ? " > " : "");
    if (response != nullptr) {
      out_.Append(response->type);
      if (!response->error.empty()) out_.Append(" ").Append(response->error);
    }
    if (timed) out_.Append(" after ").Append(Milliseconds(latency)).Append(" ms");
    if (kind != PairKind::kAnswered) out_.Append(": ").Append(problem);
    out_.Append("\n");
  }

  void ShowTotals() {
    if (options_.json) return;
    out_.Append("# ").Append(pairs_[0]).Append(" answered");
    if (timed_ > 0) {
      out_.Append(" after ").Append(Milliseconds(latency_sum_ / timed_)).Append(" ms on average, ");
      out_.Append(Milliseconds(longest_)).Append(" ms at most");
    }
    out_.Append("; ").Append(pairs_[1]).Append(" not answered, ").Append(pairs_[2]);
    out_.Append(" answered again, ").Append(pairs_[3]).Append(" responses without a request\n");
  }

  void ShowCount(const std::string& type, const std::string& error, std::int64_t count) {
    if (options_.json) {
      out_.Append("{\"type\":\"").Append(type).Append("\",");
      if (!error.empty()) out_.Append("\"error\":\"").Append(error).Append("\",");
      out_.Append("\"count\":").Append(count).Append("}\n");
      return;
    }
    const std::string number = std::to_string(count);
    out_.Append(std::string(number.size() < 8 ? 8 - number.size() : 0, ' ')).Append(number);
    out_.Append("  ").Append(type).Append(error.empty() ? "" : "  ").Append(error).Append("\n");
  }

  static std::string JsonTime(const std::string& text) {
    return text == "-" ? "null" : "\"" + text + "\"";
  }

  static std::string Milliseconds(std::int64_t nanoseconds) {
    std::string text = nanoseconds < 0 ? "-" : "";
    const std::int64_t microseconds = (nanoseconds < 0 ? -nanoseconds : nanoseconds) / 1000;
    text += std::to_string(microseconds / 1000) + ".";
    AppendDigits(text, microseconds % 1000, 3);
    return text;
  }

  unsigned IndexOf(const Record& record) const { return schema_.IndexOf(*record.type->type); }

  const Schema& schema_;
  const LogOptions& options_;
  Output& out_;
  Filter filter_;
  Printer printer_;
  Clock clock_;
  Pairing pairing_;
  std::map<std::pair<std::string, std::string>, std::int64_t> counts_;
  std::array<std::int64_t, static_cast<std::size_t>(PairKind::kKinds)> pairs_{};
  std::int64_t timed_ = 0;  // pairs whose latency is known
  std::int64_t latency_sum_ = 0;
  std::int64_t longest_ = 0;
  std::int64_t messages_ = 0;
};

}  // namespace

Status LogCommand(Schema& schema, const LogOptions& options) {
  ByteStream stream(options.file, options.follow);
  Output out;
  Log log(schema, options, out);
  stream.BeforeWait([&out] { out.Flush(); });
  const std::unique_ptr<Traffic> traffic = OpenTraffic(schema, stream);
  {
    Progress progress(stream);
    Record record;
    try {
      while (traffic->Next(record)) {
        log.Take(record);
        progress.Show();
      }
    } catch (const Error&) {
      log.Finish();  // of what was whole
      throw;
    }
  }
  log.Finish();
  out.Flush();
  const std::string passed_over = traffic->PassedOver();
  if (log.messages() == 0) {
    throw Error(stream.name() + ": no message in it" +
                (passed_over.empty() ? "" : "; " + passed_over));
  }
  if (!passed_over.empty()) Note(stream.name() + ": passed over " + passed_over);
  return kOk;
}

}  // namespace virtual_modem::inspect
