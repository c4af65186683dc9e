# Turns a file into a C++ source defining its bytes, so that programs carry resources without
# looking for them at run time. Run as a script:
#   cmake -DINPUT=file -DOUTPUT=file.cpp -DSYMBOL=name -P EmbedResource.cmake
# The source defines tintorra::<SYMBOL> (a std::span<const std::uint8_t> over the bytes).
file(READ "${INPUT}" hex HEX)
string(LENGTH "${hex}" hex_length)
math(EXPR byte_count "${hex_length} / 2")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
# Break the array into lines of 32 bytes so that compilers and editors stay comfortable.
string(REGEX REPLACE "((0x[0-9a-f][0-9a-f],){32})" "\\1\n" bytes "${bytes}")
file(WRITE "${OUTPUT}.tmp"
  "// Generated from ${INPUT} by EmbedResource.cmake; do not edit.\n"
  "#include <cstddef>\n#include <cstdint>\n#include <span>\n\n"
  "namespace tintorra {\n\nnamespace {\nconst std::uint8_t bytes[${byte_count}] = {\n${bytes}\n};\n}\n\n"
  "extern const std::span<const std::uint8_t> ${SYMBOL}(bytes, ${byte_count});\n\n}\n")
file(COPY_FILE "${OUTPUT}.tmp" "${OUTPUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUTPUT}.tmp")
