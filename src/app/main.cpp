// Entry point of kroveld.
#include "app/startup.h"

int main(int argc, char** argv) {
  return kroveld::RunMain(argc, argv);
}
