// Entry point of kroveld: without arguments the window, with arguments the command line.
#include "app/startup.h"
#include "app/window/run_window.h"

int main(int argc, char** argv) {
  if (argc <= 1) return kroveld::RunWindow(argc, argv);
  return kroveld::RunMain(argc, argv);
}
