#pragma once

#include <string>

#include "platform/base/Error.h"

namespace zeb {

/// A place where no file is made, or a file that is no longer the one that was made. Description and text
/// begin with the path, unless that is empty. Domain "Output".
class OutputError : public PlatformError {
public:
    enum class Case {
        noName,      ///< the path is empty
        isInput,     ///< the input stands there, perhaps by a link
        isFolder,    ///< a folder, or a link to one
        notRegular,  ///< a pipe, device or socket, or a link to one
        exists,      ///< a file or link that must not be replaced
        noFolder,    ///< the folder that it would be in is missing
        notAFolder,  ///< something else than a folder stands in that folder's place
        appeared,    ///< a file was put there while the work went on
        replaced,    ///< another file took the place of the file that was made
        removed,     ///< the file that was made, or its folder, was removed
    };

    /// `folder`: for `noFolder` and `notAFolder`.
    OutputError(Case errorCase, const std::string& path, const std::string& folder = {});

    Case errorCase() const noexcept { return static_cast<Case>(code()); }
    const std::string& path() const noexcept { return m_path; }

private:
    OutputError(Case errorCase, const std::string& path, const KeyedText& text);

    std::string m_path;
};

}  // namespace zeb
