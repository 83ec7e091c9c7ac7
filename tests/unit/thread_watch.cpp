// Fails every case that starts a thread in a file without the line "// ctest: threads":
// ThreadSanitizer gets the files with that line and no others (cmake/brenquil_tests.cmake).

#include <atomic>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <pthread.h>
#include <string>
#include <thread>

namespace {

std::atomic<int> started{0};

using StartOfThread = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

}  // namespace

/// Stands before the function of the C library, for the program and for all libraries that it uses.
extern "C" __attribute__((visibility("default"))) int
pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
               void* argument) noexcept {
    static auto* const create =
        reinterpret_cast<StartOfThread*>(dlsym(RTLD_NEXT, "pthread_create"));
    ++started;
    return create(thread, attributes, run, argument);
}

namespace {

bool IsMarked(const char* file) {
    // The compiler may have been called with a path that begins at the build folder.
    std::ifstream source(std::filesystem::path(BRENQUIL_BUILD_FOLDER) / file);
    for (std::string line; std::getline(source, line);) {
        if (line == "// ctest: threads") {
            return true;
        }
    }
    return false;
}

class CThreadWatch : public testing::EmptyTestEventListener {
public:
    CThreadWatch() {
        std::thread([] {}).join();
        if (started.exchange(0) != 1) {
            std::cerr << "The watch does not see the threads that start.\n";
            std::abort();
        }
    }

    void OnTestEnd(const testing::TestInfo& test) override {
        if (started.exchange(0) != 0) {
            EXPECT_TRUE(IsMarked(test.file()))
                << test.file() << " needs the line \"// ctest: threads\" for ThreadSanitizer";
        }
    }
};

[[maybe_unused]] const bool isWatching = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new CThreadWatch);
    return true;
}();

}  // namespace
