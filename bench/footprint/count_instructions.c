/* SPDX-License-Identifier: BSD-3-Clause */
/* A plugin of the qemu-user emulators: prints to stderr how many instructions the guest ran between each pair of calls
 * of footprint_begin and footprint_end. Debian ships the interface in the emulators and its header nowhere. */
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

struct qemu_plugin_tb;
struct qemu_plugin_insn;
typedef struct qemu_info qemu_info;
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb *);
struct qemu_plugin_insn *qemu_plugin_tb_get_insn(const struct qemu_plugin_tb *, size_t);
const char *qemu_plugin_insn_symbol(const struct qemu_plugin_insn *);
void qemu_plugin_register_vcpu_tb_trans_cb(uint64_t, void (*)(uint64_t, struct qemu_plugin_tb *));
void qemu_plugin_register_vcpu_insn_exec_cb(struct qemu_plugin_insn *, void (*)(unsigned, void *), int, void *);

int qemu_plugin_version = 1;

enum what { other, begin, end, kinds };
static enum what whats[kinds] = {other, begin, end};
static enum what before;
static int counting;
static unsigned long counted;

/* Runs before each instruction. */
static void step(unsigned cpu, void *data)
{
    const enum what now = *(const enum what *)data;
    (void)cpu;
    if (before == begin && now == other) { /* back from the mark */
        counting = 1;
        counted = 0;
    }
    if (counting && now == end) {
        counting = 0;
        fprintf(stderr, "%lu\n", counted);
    }
    counted += (unsigned long)counting;
    before = now;
}

static enum what mark(const char *symbol)
{
    if (!symbol) {
        return other;
    }
    return strcmp(symbol, "footprint_begin") == 0 ? begin : strcmp(symbol, "footprint_end") == 0 ? end : other;
}

static void translated(uint64_t id, struct qemu_plugin_tb *block)
{
    size_t i;
    (void)id;
    for (i = 0; i < qemu_plugin_tb_n_insns(block); ++i) {
        struct qemu_plugin_insn *const instruction = qemu_plugin_tb_get_insn(block, i);
        qemu_plugin_register_vcpu_insn_exec_cb(instruction, step, 0,
                                               &whats[mark(qemu_plugin_insn_symbol(instruction))]);
    }
}

int qemu_plugin_install(uint64_t id, const qemu_info *info, int argc, char **argv)
{
    (void)info;
    (void)argc;
    (void)argv;
    qemu_plugin_register_vcpu_tb_trans_cb(id, translated);
    return 0;
}
