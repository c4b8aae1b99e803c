// The views that log offers of the messages it reads.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "inspect/examine/glance.h"
#include "inspect/read/recording.h"
#include "inspect/show/output.h"

namespace virtual_modem::inspect {

class LogView {
 public:
  virtual ~LogView() = default;
  // passes: the filters keep the message. Views that relate messages to others need the rest too.
  virtual void Take(const Record& record, const Glance& glance, bool passes) = 0;
  // After the last message.
  virtual void Finish() {}
};

// Puts first what is wrong with the frame or the line, beside the message in it.
void AddRemark(const Record& record, std::vector<std::string>& texts);

// A line of text or a JSON object for each message.
std::unique_ptr<LogView> MakeLines(Schema& schema, bool json, bool mask, Output& out);
// The number of messages of each type and result.
std::unique_ptr<LogView> MakeCounts(bool json, Output& out);
// Requests with their responses.
std::unique_ptr<LogView> MakePairs(bool json, Output& out);
// A Mermaid sequence diagram, with the time that each response took if they are to be paired.
std::unique_ptr<LogView> MakeDiagram(Schema& schema, bool pairs, Output& out);

}  // namespace virtual_modem::inspect
