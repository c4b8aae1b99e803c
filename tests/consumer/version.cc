// A caller that asks whether it fits, as each should.
#include <virtual_modem/version.h>

#include <cstdio>

int main() {
  const std::string mismatch = virtual_modem::VersionMismatch();
  std::fputs(mismatch.c_str(), stderr);
  return mismatch.empty() ? 0 : 1;
}
