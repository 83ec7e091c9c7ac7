// Only for the build with AddressSanitizer. The program leaves by std::_Exit, which does without the search for leaks
// that comes with the normal end of a program. The linker leads these calls here.

extern "C" void __lsan_do_leak_check();
extern "C" [[noreturn]] void __real__Exit(int code);
extern "C" [[noreturn]] void __wrap__Exit(int code);

void __wrap__Exit(int code) {
    if (code == 0) {
        __lsan_do_leak_check();
    }
    __real__Exit(code);
}
