/* A program that does nothing but load what it is linked with. */
int main(void) { return 0; }
