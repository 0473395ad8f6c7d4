// Files of the source tree.
#ifndef VELAGNSS_TESTS_HOST_DATA_H
#define VELAGNSS_TESTS_HOST_DATA_H

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

// A file by its path from the root of the source tree.
inline std::string ReadHostFile(const std::string& path) {
  std::ifstream file(VELAGNSS_SOURCE_DIR "/" + path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

#endif  // VELAGNSS_TESTS_HOST_DATA_H
