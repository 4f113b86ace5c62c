#include "Stepping.h"

#include <windows.h>

#include <cstdint>

extern "C" void LandingPlace() asm("tessel_landing_place");
asm(".text\n.globl tessel_landing_place\ntessel_landing_place: int3\n");

namespace {

constexpr DWORD kTrapFlag = 0x100;
constexpr unsigned char kBreakpoint = 0xCC;

#ifdef _WIN64
constexpr auto kInstruction = &CONTEXT::Rip;
constexpr auto kStack = &CONTEXT::Rsp;
#else
constexpr auto kInstruction = &CONTEXT::Eip;
constexpr auto kStack = &CONTEXT::Esp;
#endif

/// The addresses of a module.
struct Code {
    explicit Code(const wchar_t* module)
        : base(reinterpret_cast<std::uintptr_t>(GetModuleHandleW(module))),
          size(reinterpret_cast<IMAGE_NT_HEADERS*>(
                   base + static_cast<std::uintptr_t>(reinterpret_cast<IMAGE_DOS_HEADER*>(base)->e_lfanew))
                   ->OptionalHeader.SizeOfImage) {}
    bool Contains(std::uintptr_t address) const { return address - base < size; }
    std::uintptr_t base;
    std::uintptr_t size;
};

/// What the exception handler knows; one run at a time.
struct Run {
    const Code library{L"Tessel.dll"};
    const Code program{nullptr};
    const std::function<void(unsigned long, bool)>& each;
    std::uintptr_t last = 0;     ///< the instruction before
    std::uintptr_t returnTo = 0; ///< where a call to another module returns to
    unsigned long count = 0;
    bool stepping = false;
};
Run* run = nullptr;

/// Lets another module run freely until it returns.
void StepOut(CONTEXT& context) {
    auto* const onStack = reinterpret_cast<std::uintptr_t*>(context.*kStack);
    run->returnTo = *onStack;
    *onStack = reinterpret_cast<std::uintptr_t>(&LandingPlace);
    context.EFlags &= ~kTrapFlag;
}

void Count(std::uintptr_t next, bool returned) {
    // A repeated string instruction traps in each round.
    if (run->library.Contains(run->last) && next != run->last) run->each(++run->count, returned);
    run->last = next;
}

/// @return whether the breakpoint is the landing place; the others start and end a run
bool Land(CONTEXT& context) {
    if (run->returnTo == 0) {
        run->stepping = !run->stepping;
        if (*reinterpret_cast<unsigned char*>(context.*kInstruction) == kBreakpoint) ++(context.*kInstruction);
        return false;
    }
    context.*kInstruction = run->returnTo;
    run->last = run->returnTo - 1; // in the call
    run->returnTo = 0;
    return true;
}

LONG CALLBACK OnException(EXCEPTION_POINTERS* exception) {
    CONTEXT& context = *exception->ContextRecord;
    const DWORD code = exception->ExceptionRecord->ExceptionCode;
    if (code != EXCEPTION_SINGLE_STEP && code != EXCEPTION_BREAKPOINT) return EXCEPTION_CONTINUE_SEARCH;
    const bool returned = code == EXCEPTION_BREAKPOINT && Land(context);
    if (returned || code == EXCEPTION_SINGLE_STEP) Count(context.*kInstruction, returned);
    context.EFlags = run->stepping ? context.EFlags | kTrapFlag : context.EFlags & ~kTrapFlag;
    const std::uintptr_t next = context.*kInstruction;
    if (run->stepping && !run->library.Contains(next) && !run->program.Contains(next)) StepOut(context);
    return EXCEPTION_CONTINUE_EXECUTION;
}

} // namespace

unsigned long RunInSteps(const std::function<void()>& call, const std::function<void(unsigned long, bool)>& each) {
    Run current{.each = each};
    run = &current;
    void* const handler = AddVectoredExceptionHandler(1, &OnException);
    asm volatile("int3" ::: "memory");
    call();
    asm volatile("int3" ::: "memory");
    RemoveVectoredExceptionHandler(handler);
    run = nullptr;
    return current.count;
}
