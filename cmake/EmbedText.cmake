# cmake -DSRC=table.tsv -DOUT=generated.cpp -DNAME=kEnglishTable -P EmbedText.cmake
# Writes a C++ source that holds the bytes of SRC as zp::resources::NAME / NAME##Size.
file(READ ${SRC} hex HEX)
string(LENGTH "${hex}" hexlen)
math(EXPR size "${hexlen} / 2")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
string(REGEX REPLACE "((0x[0-9a-f][0-9a-f],){16})" "\\1\n" bytes "${bytes}")
file(WRITE ${OUT}.tmp "// Generated from ${SRC}; do not edit.\n#include <cstddef>\nnamespace zp::resources {\nextern const unsigned char ${NAME}[];\nextern const std::size_t ${NAME}Size;\nconst unsigned char ${NAME}[] = {\n${bytes}0x00};\nconst std::size_t ${NAME}Size = ${size};\n}  // namespace zp::resources\n")
file(COPY_FILE ${OUT}.tmp ${OUT} ONLY_IF_DIFFERENT)
file(REMOVE ${OUT}.tmp)
