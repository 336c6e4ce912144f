// rastertodisc: puts raster pages of any size exactly onto the disc's page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/filter_arguments.h"
#include "page_fitter/fitter_job.h"

int main(int argc, char** argv) {
  return zr7700::RunFilter(
      argc, argv, "rastertodisc",
      "A CUPS filter: puts raster pages of any size exactly onto the page of a disc.",
      zr7700::RunFitterJob);
}
