#include "inspect/show/clock.h"

#include <array>
#include <ctime>

namespace virtual_modem::inspect {
namespace {

// Appends a number of at most that many digits, with zeros before it.
void AppendDigits(std::string& to, std::int64_t number, std::size_t digits) {
  const std::string text = std::to_string(number);
  to.append(digits - text.size(), '0').append(text);
}

std::string Format(const char* format, const std::tm& parts) {
  std::array<char, 40> text{};  // a year may have ten digits
  std::strftime(text.data(), text.size(), format, &parts);
  return text.data();
}

}  // namespace

std::string_view Clock::Local(const Record& record) {
  if (!record.time_text.empty()) return record.time_text;
  const std::int64_t second = record.time / 1'000'000'000;
  // Converting is slow, and most messages share their minute with the one before.
  if (second / 60 != minute_) {
    minute_ = second / 60;
    const std::time_t time = second;
    std::tm parts{};
    localtime_r(&time, &parts);
    prefix_ = Format("%m-%d %H:%M:", parts);
  }
  text_ = prefix_;
  AppendDigits(text_, second % 60, 2);
  text_ += '.';
  AppendDigits(text_, record.time % 1'000'000'000 / 1000, 6);
  return text_;
}

std::string Clock::Json(const Record& record) {
  if (record.time_text == "-") return "null";
  if (!record.time_text.empty()) return "\"" + std::string(record.time_text) + "\"";
  const std::time_t time = record.time / 1'000'000'000;
  std::tm parts{};
  gmtime_r(&time, &parts);
  std::string text = Format("\"%Y-%m-%dT%H:%M:%S.", parts);
  AppendDigits(text, record.time % 1'000'000'000 / 1000, 6);
  return text + "Z\"";
}

std::string Milliseconds(std::int64_t nanoseconds) {
  std::string text = std::to_string(nanoseconds / 1'000'000) + ".";
  AppendDigits(text, nanoseconds / 1000 % 1000, 3);
  return text;
}

}  // namespace virtual_modem::inspect
