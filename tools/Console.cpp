#include "tools/Console.h"

#include <cstdarg>
#include <cstdio>

void say(const char* p_szFormat, ...) {
    va_list args;
    va_start(args, p_szFormat);
    std::vfprintf(stdout, p_szFormat, args);
    va_end(args);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

void complain(const char* p_szFormat, ...) {
    std::fflush(stdout);
    std::fputs("error: ", stderr);
    va_list args;
    va_start(args, p_szFormat);
    std::vfprintf(stderr, p_szFormat, args);
    va_end(args);
    std::fputc('\n', stderr);
    std::fflush(stderr);
}
