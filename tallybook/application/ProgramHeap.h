// The memory of a program that works on a whole book.
#pragma once

namespace tallybook::application {

// Has what the program allocates first, 64 MiB of it, come in pages of 2 MiB where the system has them for who asks, as
// Linux has: of an import of some seconds' length or less a tenth of the time is small pages, of 4 KiB, being handed
// out at their first touch. Memory is taken as before when it is touched, and addresses alone are taken now. What goes
// beyond comes in small pages: on a virtual machine that gives free memory back to its host, large pages have mostly
// been given back, and a hundred of them take longer than what they save. What is freed stays with the program until it
// ends. Before any other thread; does nothing where the program's memory or addresses are limited, or the system or its
// allocator is of another kind.
void KeepHeapInLargePages();

}  // namespace tallybook::application
