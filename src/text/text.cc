#include <virtual_modem/text.h>
#include <virtual_modem/types.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "text/generated.h"
#include "text/mask.h"
#include "text/print.h"

namespace virtual_modem {
namespace {

using google::protobuf::MessageLite;
using text::kTables;
using text::Outcome;
using text::Show;
using text::Sink;

// On the stack, so that most messages take no memory but the text's.
constexpr std::size_t kEncodedBuffer = 2048;
constexpr std::size_t kTextBuffer = 4096 + 256;

unsigned IndexOf(const Type& type) { return static_cast<unsigned>(&type - Types().begin()); }

std::string Mark(std::size_t missing) {
  std::string mark;
  text::Append(mark, " [... ", missing, " more bytes]");
  return mark;
}

// The text that is too long for max_bytes, cut to it with its mark.
std::string Cut(std::string text, std::size_t size, std::size_t max_bytes) {
  // The more is cut, the longer may the mark be: the longest decides.
  const std::size_t mark = Mark(size).size();
  text.resize(std::min(text.size(), max_bytes > mark ? max_bytes - mark : 0));
  text::Append(text, Mark(size - text.size()));
  return text;
}

// The text that print(front, sink) makes, run twice when it does not fit the stack. front is what
// text holds in the beginning: what is printed may stand there, so that a large message takes no
// memory but the result's. It moves between the runs.
template <typename Print>
std::string Render(std::string text, const TextOptions& options, const Print& print) {
  std::array<char, kTextBuffer> buffer;
  const std::size_t limit = options.max_bytes == 0 ? SIZE_MAX : options.max_bytes;
  Sink sink(buffer.data(), std::min(buffer.size(), limit));
  print(text.data(), sink);
  const std::size_t size = sink.text().size() + sink.lost();
  if (sink.lost() == 0 && text.empty()) return std::string(sink.text());
  if (sink.lost() == 0 || limit <= buffer.size()) {
    text.resize(sink.text().size());
    std::memcpy(text.data(), sink.text().data(), text.size());
  } else {
    const std::size_t front = text.size();
    text.resize(front + std::min(size, limit));
    Sink rest(text.data() + front, text.size() - front);
    print(text.data(), rest);
    const std::size_t kept = text.size() - front;
    std::memmove(text.data(), text.data() + front, kept);
    text.resize(kept);
  }
  return size <= limit ? text : Cut(std::move(text), size, limit);
}

// What to show of bytes that nobody vouches for: when they do not fit, they may be another type's.
Show ShowOf(unsigned index, std::string_view bytes) {
  char nothing = 0;
  Sink sink(&nothing, 0);
  const Outcome outcome = text::Print(kTables, index, bytes, Show::kMasked, true, sink);
  return outcome.doubtful() ? Show::kShape : Show::kMasked;
}

}  // namespace

std::string ToText(const MessageLite& message, const TextOptions& options) {
  const Type& type = TypeOf(message);
  if (type.prototype == nullptr) return "# a message of another library";
  const Show show = options.show_subscriber_data ? Show::kAll : Show::kMasked;
  const auto print = [&](const char* bytes, std::size_t size, Sink& sink) {
    text::Print(kTables, IndexOf(type), {bytes, size}, show, options.single_line, sink);
  };

  const std::size_t size = message.ByteSizeLong();  // caches the sizes used below
  if (size <= kEncodedBuffer) {
    std::array<char, kEncodedBuffer> buffer;
    message.SerializeWithCachedSizesToArray(reinterpret_cast<std::uint8_t*>(buffer.data()));
    return Render({}, options, [&](const char*, Sink& sink) { print(buffer.data(), size, sink); });
  }
  std::string bytes;
  bytes.resize(size);
  message.SerializeWithCachedSizesToArray(reinterpret_cast<std::uint8_t*>(bytes.data()));
  return Render(std::move(bytes), options,
                [&](const char* front, Sink& sink) { print(front, size, sink); });
}

std::string ToText(std::string_view type, std::string_view bytes, const TextOptions& options) {
  const Type* found = FindType(type);
  return Render({}, options, [&](const char*, Sink& sink) {
    if (found == nullptr) {
      sink.Append("# no message type \"");
      text::AppendEscaped(type, sink);
      sink.Append("\", ");
      text::AppendNumber(bytes.size(), sink);
      sink.Append(" bytes not shown");
      return;
    }
    const unsigned index = IndexOf(*found);
    const Show show = options.show_subscriber_data ? Show::kAll : ShowOf(index, bytes);
    text::Print(kTables, index, bytes, show, options.single_line, sink);
  });
}

std::vector<std::string> MissingFields(const MessageLite& message) {
  const Type& type = TypeOf(message);
  std::vector<std::string> paths;
  if (type.prototype != nullptr && !message.IsInitialized()) {
    text::FindMissing(kTables, IndexOf(type), message.SerializePartialAsString(), &paths);
  }
  return paths;
}

std::string MaskedBytes(const MessageLite& message) {
  const Type& type = TypeOf(message);
  std::string masked;
  if (type.prototype != nullptr) {
    text::AppendMasked(kTables, IndexOf(type), message.SerializePartialAsString(), Show::kMasked,
                       masked);
  }
  return masked;
}

std::string MaskedBytes(std::string_view type, std::string_view bytes) {
  const Type* found = FindType(type);
  std::string masked;
  if (found != nullptr) {
    const unsigned index = IndexOf(*found);
    text::AppendMasked(kTables, index, bytes, ShowOf(index, bytes), masked);
  }
  return masked;
}

}  // namespace virtual_modem
