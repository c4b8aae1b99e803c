#include "call_exchange/processes.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <thread>

namespace example {
namespace {

int RunSide(const char* name, const Side& side, int socket) {
  try {
    side(socket);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::fflush(stdout);  // keeps what was shown before the error before it
    std::fprintf(stderr, "call_exchange: %s: %s\n", name, error.what());
    return EXIT_FAILURE;
  }
}

// The child's wait status.
int Reap(pid_t child, std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      continue;
    }
    std::fprintf(stderr, "call_exchange: modem does not end; killed\n");
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    break;
  }
  return status;
}

}  // namespace

int RunPair(const Side& telephony, const Side& modem, int socket_type,
            std::chrono::milliseconds timeout) {
  std::array<int, 2> sockets{};
  if (socketpair(AF_UNIX, socket_type | SOCK_CLOEXEC, 0, sockets.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  std::fflush(nullptr);  // else the child would write what is pending once more
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  // The other's end is closed, else a process would keep itself waiting.
  close(sockets[child == 0 ? 0 : 1]);
  if (child == 0) std::exit(RunSide("modem", modem, sockets[1]));

  const int result = RunSide("telephony", telephony, sockets[0]);
  const int status = Reap(child, timeout);
  if (WIFSIGNALED(status)) {
    std::fprintf(stderr, "call_exchange: modem was ended by signal %d\n", WTERMSIG(status));
  }
  return status == 0 ? result : EXIT_FAILURE;
}

}  // namespace example
