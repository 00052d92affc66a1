// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstring>

// What the Itanium C++ ABI puts into pointers to members. Like every compiler for the platforms
// we run on, GCC and Clang follow it, so these read the binary contract off a declaration.

/*! The two words of a pointer to a member function. */
struct MemberFunctionWords
{
    std::ptrdiff_t pointer; // code, or the table's offset
    std::ptrdiff_t adjust;
};

template <typename Function>
MemberFunctionWords memberFunctionWords(Function function)
{
    MemberFunctionWords words;
    static_assert(sizeof words == sizeof function, "not a pointer to a member function");
    std::memcpy(&words, &function, sizeof words);
    return words;
}

/*! Whether \a function is called through the virtual table. */
template <typename Function>
bool isVirtual(Function function)
{
    const MemberFunctionWords words = memberFunctionWords(function);
#if defined(__arm__) || defined(__aarch64__)
    return (words.adjust & 1) != 0;
#else
    return (words.pointer & 1) != 0;
#endif
}

/*! Slot of a virtual \a function, counted from 1 as the contract does; 0 if it is not virtual. */
template <typename Function>
int slotOf(Function function)
{
    if (!isVirtual(function))
        return 0;
    const MemberFunctionWords words = memberFunctionWords(function);
#if defined(__arm__) || defined(__aarch64__)
    const std::ptrdiff_t offset = words.pointer;
#else
    const std::ptrdiff_t offset = words.pointer - 1;
#endif
    return static_cast<int>(offset / static_cast<std::ptrdiff_t>(sizeof(void *))) + 1;
}

/*! Offset of a data member, bytes. */
template <typename Class, typename Member>
int offsetOf(Member Class::*member)
{
    std::ptrdiff_t offset;
    static_assert(sizeof offset == sizeof member, "not a pointer to a data member");
    std::memcpy(&offset, &member, sizeof offset);
    return static_cast<int>(offset);
}
