#include "ui/model/MovieName.h"

#include <string>

namespace zeb {

bool namesMovie(const URL& url) {
    std::string extension = url.pathExtension();
    for (char& c : extension) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    }
    return extension == "zeb";
}

}  // namespace zeb
