// picturetodisc: puts PNG, JPEG and TIFF pictures onto the page of a disc.
#include "disc/filter_arguments.h"
#include "picture_filter/picture_job.h"

int main(int argc, char** argv) {
  zr7700::PrepareFilterProcess();
  zr7700::FilterArguments arguments;
  int exit_status = 0;
  if (!zr7700::TakeArguments(
          argc, argv, "A CUPS filter: puts PNG, JPEG and TIFF pictures onto the page of a disc.",
          arguments, exit_status)) {
    return exit_status;
  }
  return zr7700::RunPictureJob(arguments);
}
