/* Defines the functions and the variable of glibc that the distribution's C++ runtime needs and
   musl does not have. The C++ runtime of a musl toolchain does not need them. */
#include <link.h>
#include <stdint.h>
#include <stdlib.h>

char __libc_single_threaded = 0;

uint32_t arc4random(void) { abort(); }

/* The unwinder asks which loaded object contains an address, and where its exception table is. */
struct object {
    unsigned long long flags;
    void* start;
    void* end;
    void* map;
    void* exceptionTable;
    unsigned long long reserved[7];
};

struct search {
    uintptr_t address;
    struct object* found;
};

static int examine(struct dl_phdr_info* info, size_t size, void* data) {
    struct search* search = data;
    int holdsAddress = 0;
    (void)size;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        ElfW(Phdr) const* header = &info->dlpi_phdr[i];
        uintptr_t start = info->dlpi_addr + header->p_vaddr;
        if (header->p_type == PT_LOAD && search->address - start < header->p_memsz) {
            search->found->start = (void*)start;
            search->found->end = (void*)(start + header->p_memsz);
            holdsAddress = 1;
        }
        if (header->p_type == PT_GNU_EH_FRAME)
            search->found->exceptionTable = (void*)start;
    }
    return holdsAddress;
}

int _dl_find_object(void* address, struct object* found) {
    struct search search = {(uintptr_t)address, found};
    return dl_iterate_phdr(examine, &search) ? 0 : -1;
}
