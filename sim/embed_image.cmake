# Turns the base calibration file into a C++ source file, so that the simulator carries the image
# inside the program. Run with -DINPUT=<file.sm1> -DOUTPUT=<file.cpp>.
file(READ "${INPUT}" hex HEX)
string(LENGTH "${hex}" digits)
if(NOT digits EQUAL 2046)
  message(FATAL_ERROR "${INPUT} must be exactly 1023 bytes")
endif()
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
string(REGEX REPLACE "((0x..,){16})" "\\1\n    " bytes "${bytes}")
file(WRITE "${OUTPUT}.tmp"
  "// Generated from sim/data/base.sm1 by sim/embed_image.cmake. Do not edit.\n"
  "#include <cstdint>\n\n"
  "namespace vela::sim::detail {\n\n"
  "extern const std::uint8_t kEmbeddedBaseImage[1023];\n"
  "const std::uint8_t kEmbeddedBaseImage[1023] = {\n    ${bytes}\n};\n\n"
  "}  // namespace vela::sim::detail\n")
file(RENAME "${OUTPUT}.tmp" "${OUTPUT}")
