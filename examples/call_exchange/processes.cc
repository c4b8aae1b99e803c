#include "call_exchange/processes.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <system_error>
#include <utility>

namespace virtual_modem::exchange {
namespace {

int RunSide(const char* name, const Side& side, Channel channel) {
  try {
    side(std::move(channel));
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::fflush(stdout);  // keeps what was shown before the error before it
    std::fprintf(stderr, "call_exchange: %s: %s\n", name, error.what());
    return EXIT_FAILURE;
  }
}

// The child's wait status. Requires SIGCHLD to be blocked, so that its arrival can be awaited.
int Reap(pid_t child, const sigset_t& child_ended, std::chrono::milliseconds timeout) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(timeout);
  const timespec limit{static_cast<time_t>(seconds.count()),
                       static_cast<long>((timeout - seconds).count()) * 1'000'000};
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (sigtimedwait(&child_ended, nullptr, &limit) < 0 && errno == EAGAIN) {
      std::fprintf(stderr, "call_exchange: modem does not end; killed\n");
      kill(child, SIGKILL);
      waitpid(child, &status, 0);
      break;
    }
  }
  return status;
}

}  // namespace

int RunPair(const Side& telephony, const Side& modem, std::chrono::milliseconds timeout) {
  auto [here, there] = Channel::Pair(timeout);
  sigset_t child_ended;
  sigset_t before;
  sigemptyset(&child_ended);
  sigaddset(&child_ended, SIGCHLD);
  sigprocmask(SIG_BLOCK, &child_ended, &before);
  std::fflush(nullptr);  // else the child would write what is pending once more

  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) {
    sigprocmask(SIG_SETMASK, &before, nullptr);
    { const Channel closed(std::move(here)); }  // else this process would keep itself waiting
    std::exit(RunSide("modem", modem, std::move(there)));
  }
  { const Channel closed(std::move(there)); }
  int result = RunSide("telephony", telephony, std::move(here));
  const int status = Reap(child, child_ended, timeout);
  sigprocmask(SIG_SETMASK, &before, nullptr);
  if (WIFSIGNALED(status)) {
    std::fprintf(stderr, "call_exchange: modem was ended by signal %d\n", WTERMSIG(status));
    result = EXIT_FAILURE;
  } else if (WEXITSTATUS(status) != EXIT_SUCCESS) {
    result = EXIT_FAILURE;
  }
  return result;
}

}  // namespace virtual_modem::exchange
