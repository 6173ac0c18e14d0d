#pragma once

#include <string>

#include "cli/export/ExportArguments.h"
#include "conversion/export/ExportRun.h"

namespace zeb::cli {

/// One export as it was asked for: what is made of which file, and where.
struct ExportJob {
    std::string input;
    std::string output;  ///< a file, or the pattern for the names of many
    ExportSettings settings;
};

/// Chooses format and output. Looks at the file system to tell folders from files, changes nothing. Throws
/// `UsageError`.
ExportJob planExport(const ExportArguments& arguments);

/// How the rule for the output reads in the help.
extern const char* const exportOutputHelp;

}  // namespace zeb::cli
