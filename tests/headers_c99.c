/* Every public header must compile as plain C99 with warnings as errors. */
#include <tollan/tollan.h>

int main(void)
{
    return 0;
}
