// A caller of the companion library.
#include <virtual_modem/capture.h>
#include <virtual_modem/text.h>
#include <virtual_modem/types.h>

int main() {
  Dial dial;
  dial.set_address("112");
  const virtual_modem::Type* type = virtual_modem::FindType(dial.GetTypeName());
  virtual_modem::CaptureWriter capture;
  return type == &virtual_modem::TypeOf(dial) && !capture.Open("/no/such/folder/file") &&
                 virtual_modem::ToText(dial) == "address: \"XXX\""
             ? 0
             : 1;
}
