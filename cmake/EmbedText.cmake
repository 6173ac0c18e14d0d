# cmake -DINPUT=file -DOUTPUT=file.cpp -DFUNCTION=name -P EmbedText.cmake
# Writes a source file whose function zeb::embedded::FUNCTION() returns the bytes of INPUT.
file(READ "${INPUT}" bytes HEX)
string(REGEX REPLACE "(................................)" "\\1\n" bytes "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
file(WRITE "${OUTPUT}" "#include <string_view>

namespace zeb::embedded {

std::string_view ${FUNCTION}();

std::string_view ${FUNCTION}() {
    static constexpr unsigned char bytes[] = {
${bytes}
    };
    return {reinterpret_cast<const char*>(bytes), sizeof bytes};
}

}  // namespace zeb::embedded
")
