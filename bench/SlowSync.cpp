// Preloaded into a program, makes each of its syncs take SLOW_SYNC_MS longer, as on a slow disk.

#include <chrono>
#include <cstdlib>
#include <dlfcn.h>
#include <thread>
#include <unistd.h>

namespace {

int syncSlowly(const char *name, int descriptor)
{
    const char *milliseconds = std::getenv("SLOW_SYNC_MS");
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds ? std::atoi(milliseconds) : 0));
    return reinterpret_cast<int (*)(int)>(::dlsym(RTLD_NEXT, name))(descriptor);
}

} // namespace

extern "C" int fsync(int descriptor)
{
    return syncSlowly("fsync", descriptor);
}

extern "C" int fdatasync(int descriptor)
{
    return syncSlowly("fdatasync", descriptor);
}
