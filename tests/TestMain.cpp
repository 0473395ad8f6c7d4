// Runs the tests in the locale of the environment, so that a run under a comma locale shows what depends on it.
#include <gmock/gmock.h>

#include <clocale>
#include <cstdio>

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  if (std::setlocale(LC_ALL, "") == nullptr) {
    std::fputs("The locale of the environment is not there\n", stderr);
    return 1;
  }
  std::setlocale(LC_MESSAGES, "C");  // as in the program, which sets no locale: what the system says is in English
  return RUN_ALL_TESTS();
}
