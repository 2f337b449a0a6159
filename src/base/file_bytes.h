// Numbers in the program's own binary files (the datalog chart file, the edit journal): stored
// little-endian, put and got at any offset.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace vela::file_bytes {

static_assert(std::endian::native == std::endian::little,
              "the program's files are little-endian, as the machines it runs on");

template <typename T>
void Put(std::string& out, T value) {
  char bytes[sizeof(T)];
  std::memcpy(bytes, &value, sizeof(T));
  out.append(bytes, sizeof(T));
}

template <typename T>
T Get(std::string_view bytes, std::size_t at) {
  T value;
  std::memcpy(&value, bytes.data() + at, sizeof(T));
  return value;
}

}  // namespace vela::file_bytes
