/* empty.c - what any program costs that is linked to this C library. */
int main(void) { return 0; }
