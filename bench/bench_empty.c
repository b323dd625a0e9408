/* bench_empty - the floor of the process benchmarks: a process that does nothing. */
int main(void) { return 0; }
