#include "unit/failing_memory.h"

#include <cstddef>
#include <new>

namespace {

constexpr int without_end = -1;

int granted_nodes = without_end;
int granted_texts = without_end;

int &granted(memory_of kind) {
    return kind == memory_of::nodes ? granted_nodes : granted_texts;
}

bool is_refused(memory_of kind) {
    int &left = granted(kind);
    if (left > 0) {
        left--;
        return false;
    }
    return left == 0;
}

} // namespace

failing_memory::failing_memory(memory_of kind, int granted_requests) : kind_(kind) {
    granted(kind_) = granted_requests;
}

failing_memory::~failing_memory() {
    granted(kind_) = without_end;
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
    if (is_refused(memory_of::nodes)) {
        return nullptr;
    }
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

// The linker sends the program's calls here (--wrap) and gives the originals the names __real_...
extern "C" {
char *__real_strdup(const char *text);
void *__real_realloc(void *memory, std::size_t size);

char *__wrap_strdup(const char *text) {
    return is_refused(memory_of::texts) ? nullptr : __real_strdup(text);
}

void *__wrap_realloc(void *memory, std::size_t size) {
    return is_refused(memory_of::texts) ? nullptr : __real_realloc(memory, size);
}
}
