#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "cli/Console.h"
#include "cli/Interruption.h"
#include "cli/Program.h"
#include "platform/text/LocalizedText.h"

int main(int argc, char** argv) {
    zeb::cli::prepareProcess();
    zeb::setTextLocale(zeb::environmentTextLocale());
    zeb::cli::Console console(std::cout, std::cerr, zeb::cli::terminalOf(STDOUT_FILENO),
                              zeb::cli::terminalOf(STDERR_FILENO));
    return static_cast<int>(
        zeb::cli::runProgram(std::vector<std::string>(argv + (argc > 0), argv + argc), console));
}
