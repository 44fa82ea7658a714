// The second baseline: a program that loads the C++ standard library, as
// every program linked with ours does, and nothing else.
#include <string>

int main()
{
    return static_cast<int>(std::to_string(0).size()) - 1;
}
