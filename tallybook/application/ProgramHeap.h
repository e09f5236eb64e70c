// The memory of a program that works on a whole book.
#pragma once

namespace tallybook::application {

// Has what the program allocates come in pages of 2 MiB where the system has them for who asks, as Linux has: an import
// that fills a hundred megabytes takes a sixth less time so, which pages of 4 KiB, each handed out at its first touch,
// would cost. Memory is taken as before when it is touched; addresses alone are taken now, for 256 MiB, and what goes
// beyond comes in small pages. What is freed stays with the program until it ends. Before any other thread; does
// nothing where the program's memory or addresses are limited, or the system or its allocator is of another kind.
void KeepHeapInLargePages();

}  // namespace tallybook::application
