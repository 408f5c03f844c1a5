// Calling the entries of a part that is loaded at run time.
#pragma once

#include <cstdint>
#include <type_traits>

namespace vark {

#ifdef __i386__

// A function of a part that takes its arguments off the stack itself (stdcall) or leaves that to its caller
// (cdecl): the stack pointer is put back to where it was, so both work. Arguments are 32 bits wide, a result
// at most so. Empty until an address is assigned.
template <typename Function> struct EntryCall;

template <typename Result, typename... Arguments> struct EntryCall<Result (*)(Arguments...)> {
    void *Address;

    Result operator()(Arguments... given) const
    {
        static_assert(((sizeof(Arguments) == sizeof(uint32_t)) && ...));
        const uint32_t words[] = {__builtin_bit_cast(uint32_t, given)...};
        uint32_t left = sizeof...(Arguments);
        uint32_t result = 0;
        // The callee keeps esi, so it still holds the old stack pointer afterwards. The callee's own frame is
        // aligned as the compiler expects it at a call.
        asm volatile("movl %%esp, %%esi\n\t"
                     "leal (,%%ecx,4), %%edx\n\t"
                     "subl %%edx, %%esp\n\t"
                     "andl $-16, %%esp\n\t"
                     "addl %%edx, %%esp\n"
                     "1:\n\t"
                     "testl %%ecx, %%ecx\n\t"
                     "jz 2f\n\t"
                     "pushl -4(%%edi,%%ecx,4)\n\t"
                     "decl %%ecx\n\t"
                     "jmp 1b\n"
                     "2:\n\t"
                     "call *%%eax\n\t"
                     "movl %%esi, %%esp"
                     : "=a"(result), "+c"(left)
                     : "0"(Address), "D"(words)
                     : "esi", "edx", "memory", "cc", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6",
                       "xmm7", "st", "st(1)", "st(2)", "st(3)", "st(4)", "st(5)", "st(6)", "st(7)");
        if constexpr (!std::is_void_v<Result>) return __builtin_bit_cast(Result, result);
    }

    // One of our own functions, where tests put it.
    EntryCall &operator=(Result (*function)(Arguments...))
    {
        Address = reinterpret_cast<void *>(function);
        return *this;
    }
};

// Puts the address of an entry, as the loader gives it, into a call.
template <typename Function> void SetEntry(EntryCall<Function> &call, void *address)
{
    call.Address = address;
}

#else

// Where functions are called in one way only, their address is all there is to it.
template <typename Function> using EntryCall = Function;

template <typename Function> void SetEntry(Function &call, void *address)
{
    call = reinterpret_cast<Function>(address);
}

#endif

} // namespace vark
