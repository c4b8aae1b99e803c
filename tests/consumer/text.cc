// A caller of the companion library, which uses each of its headers.
#include <virtual_modem/capture.h>
#include <virtual_modem/frame.h>
#include <virtual_modem/testing.h>
#include <virtual_modem/text.h>
#include <virtual_modem/types.h>
#include <virtual_modem/version.h>

#include <cstdio>

int main() {
  const std::string mismatch = virtual_modem::VersionMismatch();
  std::fputs(mismatch.c_str(), stderr);
  Dial dial;
  dial.set_address("112");
  std::string stream;
  bool right = virtual_modem::AppendFrame(dial, 0, stream);
  virtual_modem::FrameReader reader(1024);
  reader.Add(stream);
  while (const auto read = reader.Next()) {
    const auto parsed = virtual_modem::Parse(read->frame.type, read->frame.message);
    right = right && parsed && virtual_modem::FirstDifference(*parsed.message, dial).empty() &&
            virtual_modem::Visit(*parsed.message, [](Dial& m) { return m.address(); }) == "112";
  }
  virtual_modem::CaptureWriter capture;
  return right && virtual_modem::MissingFields(dial).size() == 3 && mismatch.empty() &&
                 !capture.Open("/no/such/folder/file") &&
                 virtual_modem::ToText(dial) == "address: \"XXX\""
             ? 0
             : 1;
}
