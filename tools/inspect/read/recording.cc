#include "inspect/read/recording.h"

#include <algorithm>

#include "inspect/error.h"
#include "inspect/read/input.h"

namespace virtual_modem::inspect {

Recording::Recording(const Schema& schema, const std::vector<std::string>& files, bool follow,
                     std::function<void()> before_wait)
    : schema_(schema), before_wait_(std::move(before_wait)) {
  for (const std::string& file : files) Open(file, follow && &file == &files.back());
}

void Recording::Open(const std::string& file, bool follow) {
  streams_.push_back(std::make_unique<ByteStream>(file, follow));
  streams_.back()->BeforeWait(before_wait_);
}

bool Recording::Next(Record& record) {
  for (; at_ < streams_.size(); ++at_) {
    ByteStream& stream = *streams_[at_];
    if (!traffic_) {
      traffic_ = ResolutionOf(stream) ? ReadCapture(schema_, stream) : ReadLog(schema_, stream);
    }
    if (traffic_->Next(record)) {
      ++messages_;
      return true;
    }
    const std::string passed_over = traffic_->PassedOver();
    if (!passed_over.empty()) passed_over_.emplace_back(stream.name(), passed_over);
    traffic_.reset();
    if (stream.moved()) Open(stream.name(), true);
  }
  return false;
}

std::optional<capture::Resolution> Recording::Resolution() {
  auto finest = capture::Resolution::kMicroseconds;
  for (const auto& stream : streams_) {
    const auto resolution = ResolutionOf(*stream);
    if (!resolution) return std::nullopt;
    finest = std::max(finest, *resolution);
  }
  return finest;
}

std::string Recording::names() const {
  std::string names;
  for (const auto& stream : streams_) names += (names.empty() ? "" : ", ") + stream->name();
  return names;
}

void Recording::RequireMessages(const std::string& hint) const {
  if (messages_ != 0) return;
  std::string why = names() + ": no message in it";
  for (const auto& [name, what] : passed_over_) why += "; " + what;
  throw Error(why + hint);
}

void Recording::NotePassedOver(const std::string& words) const {
  for (const auto& [name, what] : passed_over_) {
    std::string note = name;
    note.append(": ").append(words).append(" ").append(what);
    Note(note);
  }
}

}  // namespace virtual_modem::inspect
