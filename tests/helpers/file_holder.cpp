// Test helper: holds a file open with the library's shared opener until its
// standard input ends (the test lets go, or dies), as another process would.
//   file_holder PATH MODE   prints "held" or "failed <error>" on one line.
#include <cstdio>

#include "paragraph/open_shared.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: file_holder PATH MODE\n");
    return 2;
  }
  para::Opened file = para::OpenShared(0, argv[1], argv[2]);
  if (!file) {
    std::printf("failed %d\n", file.error);
    std::fflush(stdout);
    return 1;
  }
  std::printf("held\n");
  std::fflush(stdout);
  // Standard input ends when the test releases the file.
  while (std::getchar() != EOF) {
  }
  return 0;
}
