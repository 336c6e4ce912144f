/* A library that is only there. */
int zr7700_empty_library = 0;
