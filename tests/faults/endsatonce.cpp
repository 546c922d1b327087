// A program for trials of processes: it needs no library, and lies where no library of another program does.
//
// Trials let system calls fail by the place where they are made. The rule stays with the process that they have started, so
// the program must make its one call somewhere else, in each run.
#if defined(__x86_64__)
extern "C" [[noreturn]] void _start()
{
    for (;;)
        asm volatile("syscall" : : "a"(231L), "D"(0L) : "rcx", "r11", "memory");
}
#else
int main() {}
#endif
