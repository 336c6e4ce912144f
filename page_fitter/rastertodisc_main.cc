// rastertodisc: puts raster pages of any size exactly onto the disc's page.
#include "disc/filter_arguments.h"
#include "page_fitter/fitter_job.h"

int main(int argc, char** argv) {
  zr7700::PrepareFilterProcess();
  zr7700::FilterArguments arguments;
  int exit_status = 0;
  if (!zr7700::TakeArguments(argc, argv,
                             "A CUPS filter: puts raster pages exactly onto the page of a disc.",
                             arguments, exit_status)) {
    return exit_status;
  }
  return zr7700::RunFitterJob(arguments);
}
