// Plugin of qemu's user emulation: counts the instructions that a program executes and writes their
// number to stderr when it ends. Usage: qemu-arm -plugin count_instructions.so PROGRAM
//
// Debian packages qemu without the header of its plugins, so what is used of it is declared here
// (interface version 1).
#include <cinttypes>
#include <cstddef>
#include <cstdio>

extern "C" {
using qemu_plugin_id_t = std::uint64_t;
struct qemu_plugin_tb;  // a block of instructions that are executed one after another
enum qemu_plugin_op { QEMU_PLUGIN_INLINE_ADD_U64 };

void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id,
                                           void (*callback)(qemu_plugin_id_t, qemu_plugin_tb*));
void qemu_plugin_register_vcpu_tb_exec_inline(qemu_plugin_tb* block, qemu_plugin_op op,
                                              void* counter, std::uint64_t immediate);
void qemu_plugin_register_atexit_cb(qemu_plugin_id_t id, void (*callback)(qemu_plugin_id_t, void*),
                                    void* data);
std::size_t qemu_plugin_tb_n_insns(const qemu_plugin_tb* block);

extern const int qemu_plugin_version;
const int qemu_plugin_version = 1;

int qemu_plugin_install(qemu_plugin_id_t id, const void* info, int argc, char** argv);
}

namespace {

std::uint64_t executed = 0;

void Translated(qemu_plugin_id_t /*id*/, qemu_plugin_tb* block) {
  qemu_plugin_register_vcpu_tb_exec_inline(block, QEMU_PLUGIN_INLINE_ADD_U64, &executed,
                                           qemu_plugin_tb_n_insns(block));
}

void Ended(qemu_plugin_id_t /*id*/, void* /*data*/) {
  std::fprintf(stderr, "%" PRIu64 "\n", executed);
}

}  // namespace

int qemu_plugin_install(qemu_plugin_id_t id, const void* /*info*/, int /*argc*/, char** /*argv*/) {
  qemu_plugin_register_vcpu_tb_trans_cb(id, Translated);
  qemu_plugin_register_atexit_cb(id, Ended, nullptr);
  return 0;
}
