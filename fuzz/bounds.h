// What a call may take, whatever it is given: 64 KiB of stack, and heap and time in proportion to its octets.
#pragma once

#include <sys/mman.h>
#include <ucontext.h>

#include <cstdint>

#include "accesses.h"
#include "require.h"
#include "support/allocations.h"

namespace zr_test {

// Calls on a stack of 64 KiB that ends at a page nobody may touch. Nothing may be thrown through it. The sanitizers
// make frames larger and do not know such stacks: with ZR_LARGE_FRAMES the program's own is used.
class small_stack {
public:
    template <class Call>
    static void run(Call& call) {
#ifdef ZR_LARGE_FRAMES
        call();
#else
        static small_stack stack;
        stack.call_ = [](void* of) { (*static_cast<Call*>(of))(); };
        stack.of_ = &call;
        swapcontext(&stack.here_, &stack.there_);
#endif
    }

private:
    static constexpr size_t size = 0x10000;
    static constexpr size_t guard = 0x1000;

    small_stack() {
        auto* memory = static_cast<unsigned char*>(
            mmap(nullptr, guard + size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        require(memory != MAP_FAILED && mprotect(memory, guard, PROT_NONE) == 0, "no memory for a stack");
        getcontext(&there_);
        there_.uc_stack.ss_sp = memory + guard;
        there_.uc_stack.ss_size = size;
        const auto self = reinterpret_cast<uintptr_t>(this);
        makecontext(&there_, reinterpret_cast<void (*)()>(serve), 2, static_cast<unsigned int>(self),
                    static_cast<unsigned int>(uint64_t{self} >> 32));
    }

    // Every run makes one turn of the loop.
    static void serve(unsigned int low, unsigned int high) {
        auto* stack = reinterpret_cast<small_stack*>(static_cast<uintptr_t>(low | uint64_t{high} << 32));
        for (;;) {
            stack->call_(stack->of_);
            swapcontext(&stack->there_, &stack->here_);
        }
    }

    ucontext_t here_{}, there_{};
    void (*call_)(void*) = nullptr;
    void* of_ = nullptr;
};

// What a call took: of heap the octets it asked for, and the accesses to memory, in a build that counts them.
struct taken {
    size_t heap;
    uint64_t accesses;
};

// What a call answers on 64 KiB of stack.
template <class Call>
int measured(allocations& watched, taken& took, const Call& call) {
    int status = 0;
    auto run = [&] { status = call(); };
    const size_t heap_before = watched.restart_peak();
    const uint64_t accesses_before = accesses;
    small_stack::run(run);
    took = {watched.peak() - heap_before, accesses - accesses_before};
    return status;
}

}  // namespace zr_test
