# Writes OUTPUT, a C++ source with the content of FILES. Bytes rather than string literals: the compiler limits those.
set(arrays "")
set(entries "")
foreach(path IN LISTS FILES)
    get_filename_component(name "${path}" NAME)
    string(MAKE_C_IDENTIFIER "${name}" symbol)
    file(READ "${path}" content HEX)
    string(REGEX REPLACE "(..)" "0x\\1," bytes "${content}")
    string(APPEND arrays "constexpr unsigned char ${symbol}[] = {${bytes}};\n")
    string(APPEND entries "        {\"${name}\", {reinterpret_cast<const char*>(${symbol}), sizeof ${symbol}}},\n")
endforeach()
file(WRITE "${OUTPUT}" "#include \"standin/page_files.h\"

namespace kibo::standin {
namespace {
${arrays}}  // namespace

const std::map<std::string, std::string_view>& pageFiles() {
    static const std::map<std::string, std::string_view> files = {
${entries}    };
    return files;
}

}  // namespace kibo::standin
")
