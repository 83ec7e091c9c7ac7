// Only for the builds that count executed lines or branches. The counts are written when a program
// ends in the normal way, and this one leaves by std::_Exit. The linker leads these calls here.

extern "C" void __gcov_dump();
extern "C" [[noreturn]] void __real__Exit(int code);
extern "C" [[noreturn]] void __wrap__Exit(int code);

void __wrap__Exit(int code) {
    __gcov_dump();
    __real__Exit(code);
}
