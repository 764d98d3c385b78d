// Waits until it is killed. Its memory use is that of the emulator.
#include <unistd.h>

int main()
{
    return ::pause();
}
