// A program of nothing, in C++.
#include <iostream>

int main()
{
    std::cout.flush();
    return 0;
}
