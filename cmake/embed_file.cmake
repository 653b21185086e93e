# cmake -DFILE=page.html -DHEADER=page.h -DNAME=ovix::app::Page -DOUT=page.cpp -P embed_file.cmake
#
# Writes a source file with the bytes of a file, for the function `std::string_view NAME()` that the header declares.
file(READ ${FILE} bytes HEX)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
file(WRITE ${OUT} "#include \"${HEADER}\"\n
static constexpr unsigned char kBytes[] = {${bytes}};\n
std::string_view ${NAME}() { return {reinterpret_cast<const char*>(kBytes), sizeof kBytes}; }\n")
