// What docs/performance.md advises, each way of doing a thing beside the other: benchmarks named
// "advice/TOPIC/WAY/MESSAGE".
#include "advice.h"

#include <benchmark/benchmark.h>
#include <google/protobuf/arena.h>

#include <memory>
#include <sstream>
#include <string>

#include "workloads.h"

namespace virtual_modem::bench {
namespace {

using google::protobuf::Arena;

template <typename Body>
void Add(const std::string& name, Body body) {
  benchmark::RegisterBenchmark(("advice/" + name).c_str(), [body](benchmark::State& state) mutable {
    for (auto _ : state) benchmark::DoNotOptimize(body());
  });
}

// Where the bytes go, from a message that is filled already.
template <typename Message>
void AddSerialize(const std::string& name, const Message& message) {
  std::string buffer(message.ByteSizeLong(), '\0');
  Add("serialize/SerializeToArray/" + name, [message, buffer]() mutable {
    return message.SerializeToArray(buffer.data(), static_cast<int>(buffer.size()));
  });
  Add("serialize/cached_size/" + name, [message, buffer]() mutable {
    if (message.ByteSizeLong() > buffer.size()) return false;
    auto* const out = reinterpret_cast<std::uint8_t*>(buffer.data());
    return message.SerializeWithCachedSizesToArray(out) != nullptr;
  });
  Add("serialize/SerializeAsString/" + name, [message] { return message.SerializeAsString(); });
  Add("serialize/ostream/" + name, [message] {
    std::ostringstream out;
    return message.SerializeToOstream(&out);
  });
}

// Who owns the message that is read into.
template <typename Record>
void AddOwner(const std::string& name, const Record& record) {
  using Message = typename Record::Message;
  Message filled;
  record.Fill(filled);
  std::string bytes = filled.SerializeAsString();
  const auto read = [bytes](Message& message) {
    return message.ParseFromString(bytes) ? Record::Read(message) : 0;
  };
  Add("owner/reused/" + name,
      [read, message = std::make_shared<Message>()] { return read(*message); });
  Add("owner/stack/" + name, [read] {
    Message message;
    return read(message);
  });
  Add("owner/new_arena/" + name, [read] {
    Arena arena;
    return read(*Arena::CreateMessage<Message>(&arena));
  });
  struct Block {
    alignas(8) char bytes[16 * 1024];
  };
  Add("owner/arena_on_a_block/" + name, [read, block = std::make_shared<Block>()] {
    Arena arena(block->bytes, sizeof block->bytes);
    return read(*Arena::CreateMessage<Message>(&arena));
  });
  Add("encode/new_object/" + name, [record, bytes]() mutable {
    Message message;
    record.Fill(message);
    return message.SerializeToArray(bytes.data(), static_cast<int>(bytes.size()));
  });
  Add("encode/reused_object/" + name,
      [record, bytes, message = std::make_shared<Message>()]() mutable {
        message->Clear();
        record.Fill(*message);
        return message->SerializeToArray(bytes.data(), static_cast<int>(bytes.size()));
      });
  Add("required/IsInitialized/" + name, [filled] { return filled.IsInitialized(); });
}

// Handing a list on: its elements change hands, or are copied.
void AddMove() {
  const auto calls = [] {
    auto response = std::make_shared<GetCurrentCallsResponse>();
    MakeCurrentCalls().Fill(*response);
    return response;
  };
  const auto target = std::make_shared<GetCurrentCallsResponse>();
  Add("hand_on/CopyFrom/GetCurrentCallsResponse", [from = calls(), target] {
    target->CopyFrom(*from);
    return target->calls_size();
  });
  Add("hand_on/Swap/GetCurrentCallsResponse", [from = calls(), target] {
    target->Swap(from.get());
    return target->calls_size();
  });
}

// A message that lacks a required field, as a hostile or broken peer sends it. The runtime writes a
// line to stderr for each that ParseFromString rejects.
void AddReject() {
  NoResultResponse lacking;
  lacking.set_platformtype(QCOM);
  const std::string bytes = lacking.SerializePartialAsString();
  const auto message = std::make_shared<NoResultResponse>();
  Add("reject/ParseFromString/NoResultResponse",
      [bytes, message] { return message->ParseFromString(bytes); });
  Add("reject/partial_then_IsInitialized/NoResultResponse", [bytes, message] {
    return message->ParsePartialFromString(bytes) && message->IsInitialized();
  });
}

template <typename Record>
void AddRecord(const std::string& name, const Record& record) {
  typename Record::Message message;
  record.Fill(message);
  AddSerialize(name, message);
  AddOwner(name, record);
}

}  // namespace

void RegisterAdvice() {
  AddRecord("NoResultResponse", MakeNoResult());
  AddRecord("GetCurrentCallsResponse", MakeCurrentCalls());
  AddRecord("SignalStrengthChanged", MakeSignalChanged());
  AddMove();
  AddReject();
}

}  // namespace virtual_modem::bench
