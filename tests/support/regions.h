// Counts the parallel regions that the OpenMP runtime forks, with the number of threads they ask for.
#pragma once

namespace regions {

// False where another OpenMP tool has the seat (thread sanitizer): counts stay 0 there.
bool counted();
int forks();         // regions since the start of the process
int lastRequested(); // threads asked for by the newest one

} // namespace regions
