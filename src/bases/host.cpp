#include "bases/host.h"

#include "platform/process.h"

#include <cstdio>

namespace brenquil {

void IHost::Fail(Stream stream, const std::string& text) {
    PrintLastWords(stream, text);
    EndProcess(1);
}

void IHost::PrintLastWords(Stream stream, const std::string& text) {
    std::FILE* const file = stream == Stream::Output ? stdout : stderr;
    (void)std::fputs(text.c_str(), file);
    (void)std::fflush(file);
}

void CPlainHost::Print(std::string_view message) {
    PrintBare(message);
}

void CPlainHost::PrintBare(std::string_view line) {
    std::string text(line);
    text += '\n';
    (void)std::fputs(text.c_str(), stdout);
    (void)std::fflush(stdout);
}

}  // namespace brenquil
