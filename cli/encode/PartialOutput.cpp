#include "cli/encode/PartialOutput.h"

#include <vector>

#include "format/ZEBErrors.h"
#include "format/check/PartialFile.h"
#include "platform/files/FileManager.h"
#include "platform/text/ErrorText.h"
#include "platform/text/LocalizedText.h"

namespace zeb::cli {
namespace {

std::string joined(const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts)
        result += (result.empty() ? "" : "; ") + text;
    return result;
}

}  // namespace

PartialOutcome settlePartialMovie(OutputPlace& output) {
    const std::string& path = output.path();
    const bool hadOwn = output.isOwn();
    const bool hadCreated = output.hasCreated();
    const bool hadPrevious = !output.previousPath().empty();
    const auto wherePrevious = [&output] {
        return localizedText("partial_previous_format", {output.previousPath()});
    };
    std::vector<std::string> texts;
    const auto stayUnfinished = [&](const std::string& reason) {
        output.keepBoth();
        texts.push_back(localizedText("partial_unfinished_format", {path, reason}));
        if (hadPrevious) texts.push_back(wherePrevious());
        return PartialOutcome{0, joined(texts)};
    };
    if (hadOwn) {
        try {
            if (const std::int64_t seconds = finishPartialFile(path); seconds > 0) {
                output.keepBoth();
                texts.push_back(seconds == 1 ? localizedText("partial_finished_one_format", {path})
                                             : localizedText("partial_finished_format", {path, seconds}));
                if (hadPrevious) texts.push_back(wherePrevious());
                return {seconds, joined(texts)};
            }
        } catch (const FileError& error) {
            return stayUnfinished(localizedText(error.reasonText()));
        } catch (const MovieDamageError& error) {
            return stayUnfinished(errorText(error));
        } catch (const std::exception&) {
            // The header is incomplete, so remove the file below.
        }
    } else if (hadCreated && files::kindOf(path)) {
        texts.push_back(localizedText("partial_other_file_format", {path}));
    }
    try {
        output.putBack();
        if (hadOwn) texts.push_back(localizedText("partial_removed_format", {path}));
        if (!output.previousPath().empty()) {
            texts.push_back(wherePrevious());
        } else if (hadCreated && hadPrevious) {
            texts.push_back(localizedText("partial_previous_restored"));
        }
    } catch (const FileError& error) {
        if (hadOwn) texts.push_back(localizedText("partial_not_removed_format", {path, error.reasonText()}));
        if (!output.previousPath().empty()) texts.push_back(wherePrevious());
    }
    return {0, joined(texts)};
}

}  // namespace zeb::cli
