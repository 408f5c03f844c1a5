/* A library that calls itself VARK40 and has none of its functions but one. */
int VARK_Status(void);
int VARK_Status(void) { return 1; }
