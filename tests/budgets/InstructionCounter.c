/* A plugin for QEMU's user emulation that counts the instructions which a program executes between the entry and the
 * return of one function:
 *
 *     qemu-arm -d plugin -D log -plugin InstructionCounter.so,function=RunBudgetedJob,out=counts program
 *
 * The program needs its symbol table, which QEMU reads only with -d. The file `counts` gets the line "calls N", how
 * often the function was entered and left, and a line "block instructions address" for every block of code that ran. The
 * addresses are those of this process, whose mappings to files follow as Linux writes them. An instruction whose condition
 * is false counts as executed. */

#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* Debian has no package of qemu-plugin.h. These are its declarations for version 1 of the interface. */
typedef uint64_t qemu_plugin_id_t;
struct qemu_info_t;
struct qemu_plugin_tb;
struct qemu_plugin_insn;
enum qemu_plugin_cb_flags { QEMU_PLUGIN_CB_NO_REGS };
void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t, void (*)(qemu_plugin_id_t, struct qemu_plugin_tb*));
void qemu_plugin_register_vcpu_tb_exec_cb(struct qemu_plugin_tb*, void (*)(unsigned int, void*),
                                          enum qemu_plugin_cb_flags, void*);
void qemu_plugin_register_atexit_cb(qemu_plugin_id_t, void (*)(qemu_plugin_id_t, void*), void*);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb*);
struct qemu_plugin_insn* qemu_plugin_tb_get_insn(const struct qemu_plugin_tb*, size_t);
uint64_t qemu_plugin_insn_vaddr(const struct qemu_plugin_insn*);
size_t qemu_plugin_insn_size(const struct qemu_plugin_insn*);
void* qemu_plugin_insn_haddr(const struct qemu_plugin_insn*);
const char* qemu_plugin_insn_symbol(const struct qemu_plugin_insn*);

int qemu_plugin_version = 1;

/* A translated block: instructions that always run one after the other. */
struct Block {
    struct Block* next;
    uint64_t begin; /* addresses in the program */
    uint64_t end;
    uintptr_t memory; /* where `begin` is in this process */
    uint64_t instructions;
    uint64_t runs;
    bool isEntry;
};

static const char* function = "main";
static const char* out = "counts";
static struct Block* blocks;
static uint64_t endOfPrevious;
static uint64_t returnAddress;
static bool counting;
static int entered;
static int left;

/* The call ends the previous block, so the address behind that block is the one that the function returns to. */
static void OnBlockRuns(unsigned int cpu, void* data)
{
    struct Block* const block = data;
    (void)cpu;
    if (counting && block->begin == returnAddress) {
        counting = false;
        ++left;
    } else if (!counting && block->isEntry) {
        counting = true;
        ++entered;
        returnAddress = endOfPrevious;
    }
    if (counting) {
        ++block->runs;
    }
    endOfPrevious = block->end;
}

/* All blocks of a function have its symbol. The first one that is translated is its entry. */
static void OnBlockTranslated(qemu_plugin_id_t id, struct qemu_plugin_tb* translated)
{
    static uint64_t entry;
    struct Block* const block = calloc(1, sizeof *block);
    const size_t count = qemu_plugin_tb_n_insns(translated);
    const struct qemu_plugin_insn* const first = qemu_plugin_tb_get_insn(translated, 0);
    const struct qemu_plugin_insn* const last = qemu_plugin_tb_get_insn(translated, count - 1);
    const char* const symbol = qemu_plugin_insn_symbol(first);
    (void)id;
    if (block == NULL) {
        abort();
    }
    block->begin = qemu_plugin_insn_vaddr(first);
    block->end = qemu_plugin_insn_vaddr(last) + qemu_plugin_insn_size(last);
    block->memory = (uintptr_t)qemu_plugin_insn_haddr(first);
    block->instructions = count;
    if (entry == 0 && symbol != NULL && strcmp(symbol, function) == 0) {
        entry = block->begin;
    }
    block->isEntry = entry != 0 && block->begin == entry;
    block->next = blocks;
    blocks = block;
    qemu_plugin_register_vcpu_tb_exec_cb(translated, OnBlockRuns, QEMU_PLUGIN_CB_NO_REGS, block);
}

static void OnExit(qemu_plugin_id_t id, void* data)
{
    FILE* const report = fopen(out, "w");
    FILE* const mappings = fopen("/proc/self/maps", "r");
    (void)id;
    (void)data;
    if (report == NULL || mappings == NULL) {
        return;
    }
    fprintf(report, "calls %d\n", entered == left ? entered : -1);
    for (const struct Block* block = blocks; block != NULL; block = block->next) {
        if (block->runs != 0) {
            fprintf(report, "block %llu %lx\n", (unsigned long long)(block->runs * block->instructions),
                    (unsigned long)block->memory);
        }
    }
    for (int character = getc(mappings); character != EOF; character = getc(mappings)) {
        putc(character, report);
    }
    fclose(mappings);
    fclose(report);
}

int qemu_plugin_install(qemu_plugin_id_t id, const struct qemu_info_t* info, int argc, char** argv)
{
    (void)info;
    for (int i = 0; i < argc; ++i) {
        if (strncmp(argv[i], "function=", 9) == 0) {
            function = strdup(argv[i] + 9);
        } else if (strncmp(argv[i], "out=", 4) == 0) {
            out = strdup(argv[i] + 4);
        }
    }
    qemu_plugin_register_vcpu_tb_trans_cb(id, OnBlockTranslated);
    qemu_plugin_register_atexit_cb(id, OnExit, NULL);
    return 0;
}
