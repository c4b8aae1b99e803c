// Logs with one message a line: the name of its type, then its bytes in hex or its text.
// Such lines are written by this program, by callers of ToText() and by people, with anything
// around.
#pragma once

#include <google/protobuf/dynamic_message.h>

#include <cstddef>
#include <cstdint>
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
  struct Header;

  bool NextLine();
  bool ReadLine(Record& record);
  bool ReadText(const Header& header, std::string_view text, bool direct, Record& record);
  bool ReadHex(Header header, Record& record);
  bool Fill(const Header& header, Record& record);
  void ReadTime(std::string_view line, Record& record);

  const Schema& schema_;
  ByteStream& stream_;
  std::string buffer_;
  std::size_t begin_ = 0;
  std::string_view line_;
  std::int64_t number_ = 0;
  std::int64_t other_lines_ = 0;
  std::string bytes_;
  int year_ = 2001;           // of dates that say none
  std::int64_t latest_ = -1;  // the last of them, in seconds
  google::protobuf::DynamicMessageFactory factory_;
};

}  // namespace virtual_modem::inspect
