/* A library of the right name that is no record manager. */
int nothing_to_bind;
