// Logs with one message a line: the name of its type, and behind it its bytes in hex or its text.
#pragma once

#include <google/protobuf/io/tokenizer.h>
#include <google/protobuf/text_format.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "inspect/read/traffic.h"

namespace virtual_modem::inspect {

class TextLogReader : public Traffic {
 public:
  // Both must outlive the reader.
  TextLogReader(const Schema& schema, ByteStream& stream) : schema_(schema), stream_(stream) {}

  bool Next(Record& record) override;
  std::string PassedOver() const override;

 private:
  bool NextLine();
  bool ReadLine(Record& record);
  bool ReadMessage(const TypeInfo& type, std::string_view rest, Record& record);
  bool ReadText(const TypeInfo& type, std::string_view text, Record& record);

  const Schema& schema_;
  ByteStream& stream_;
  std::string buffer_;
  std::size_t begin_ = 0;
  std::string_view line_;
  std::int64_t number_ = 0;
  std::int64_t other_lines_ = 0;
  std::string bytes_;
  google::protobuf::DynamicMessageFactory factory_;
};

}  // namespace virtual_modem::inspect
