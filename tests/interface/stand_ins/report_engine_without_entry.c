/* A report engine of another version: the last of its eleven entries is missing. */
int RSOpenReport(void) { return 7; }
int RSCopyReport(void) { return 8; }
void RSCloseReport(void) {}
int RSAddData(void) { return 1; }
int RSOpenVirtualReport(void) { return 1; }
void RSCloseVirtualReport(void) {}
int RSAddVirtualData(void) { return 1; }
int RSGetVirtualPages(void) { return 1; }
void *RSOpenView(void) { return 0; }
void *RSCopyView(void) { return 0; }
