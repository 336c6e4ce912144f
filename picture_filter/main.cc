// picturetodisc: puts PNG, JPEG and TIFF pictures onto the page of a disc.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/filter_arguments.h"
#include "picture_filter/picture_job.h"

int main(int argc, char** argv) {
  return zr7700::RunFilter(
      argc, argv, "picturetodisc",
      "A CUPS filter: puts PNG, JPEG and TIFF pictures onto the page of a disc.",
      zr7700::RunPictureJob);
}
