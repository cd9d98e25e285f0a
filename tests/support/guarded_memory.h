// Memory with a page behind it that nobody may touch: reading or writing one byte too far ends the test
// program, in every build.
#pragma once

#include <cstddef>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace qvtest {

class GuardedMemory {
public:
    explicit GuardedMemory(std::size_t size)
        : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))), size_((size + page_ - 1) / page_ * page_) {
        start_ = mmap(nullptr, size_ + page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (start_ == MAP_FAILED) throw std::bad_alloc();
        mprotect(static_cast<char*>(start_) + size_, page_, PROT_NONE);
    }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
    ~GuardedMemory() { munmap(start_, size_ + page_); }

    // The last `count` elements before the border.
    template <class T>
    [[nodiscard]] T* Last(std::size_t count) const {
        return reinterpret_cast<T*>(static_cast<char*>(start_) + size_) - count;
    }

private:
    std::size_t page_;
    std::size_t size_;
    void* start_;
};

}  // namespace qvtest
