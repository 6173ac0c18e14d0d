#include "cli/PartialOutput.h"

#include <vector>

#include "cli/Text.h"
#include "format/MovieDamageError.h"
#include "format/PartialFile.h"
#include "platform/ErrorText.h"
#include "platform/FileManager.h"
#include "platform/LocalizedText.h"

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
    const auto wherePrevious = [&output] { return "the movie of before is now " + output.previousPath(); };
    std::vector<std::string> texts;
    const auto stayUnfinished = [&](const std::string& reason) {
        output.keepBoth();
        texts.push_back(path + " stays unfinished (" + reason + ")");
        if (hadPrevious) texts.push_back(wherePrevious());
        return PartialOutcome{0, joined(texts)};
    };
    if (hadOwn) {
        try {
            if (const std::int64_t seconds = finishPartialFile(path); seconds > 0) {
                output.keepBoth();
                texts.push_back(path + " was finished after " + countText(seconds, "second", "seconds") +
                                " and plays as a shorter movie");
                if (hadPrevious) texts.push_back(wherePrevious());
                return {seconds, joined(texts)};
            }
        } catch (const FileError& error) {
            return stayUnfinished(localizedText(error.reasonText()));
        } catch (const MovieDamageError& error) {
            return stayUnfinished(errorText(error));
        } catch (const std::exception&) {
            // Not even its header was written.
        }
    } else if (hadCreated && files::kindOf(path)) {
        texts.push_back(path + " is another file by now and is left alone");
    }
    try {
        output.putBack();
        if (hadOwn) texts.push_back(path + " had no whole second yet and was removed");
        if (!output.previousPath().empty()) {
            texts.push_back(wherePrevious());
        } else if (hadCreated && hadPrevious) {
            texts.push_back("the movie of before is back in its place");
        }
    } catch (const FileError& error) {
        if (hadOwn)
            texts.push_back(path + " has no whole second and could not be removed (" +
                            localizedText(error.reasonText()) + ")");
        if (!output.previousPath().empty()) texts.push_back(wherePrevious());
    }
    return {0, joined(texts)};
}

}  // namespace zeb::cli
