// The program brenquil-tables: makes, checks and explains endgame tables.
#include "platform/standard_streams.h"
#include "tables/program.h"

#include <string>
#include <vector>

int main(int argc, char* argv[]) {
    brenquil::UseBinaryStandardStreams();
    return brenquil::RunTablesProgram(std::vector<std::string>(argv + 1, argv + argc));
}
