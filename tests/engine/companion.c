/* The three libraries of a family that hold no entry: they only say that they were loaded, which
 * trace.c does for every library that it is linked into. */
int zr7700_test_companion(void);
int zr7700_test_companion(void) { return 0; }
