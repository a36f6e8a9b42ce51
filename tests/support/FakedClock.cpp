// Started with a clock that libfaketime sets to the year 2000: succeeds if it sees that.
#include <cstdio>
#include <ctime>

int main()
{
    const bool isFaked = std::time(nullptr) < 1'000'000'000;
    std::puts(isFaked ? "The clock is faked." : "libfaketime does not work here.");
    return isFaked ? 0 : 1;
}
