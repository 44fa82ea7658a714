/*
 * A C99 program that uses the C library by its plain names, as a user's
 * program does with TOLLAN_PLAIN_C_NAMES, linked with the shared library:
 * the macros name real exports, and the streams work through them.
 */
#include <string.h>

#define TOLLAN_PLAIN_C_NAMES
#include <tollan/ansi_c.h>

int main(int argc, char **argv)
{
    char name[L_tmpnam];
    FILE *file;
    int number = 0;
    char word[8];
    (void)argc;
    (void)argv;
    if (tmpnam(name) == NULL) return 1;
    file = fopen(name, "w+");
    if (file == NULL) return 2;
    if (fprintf(file, "%d %s\n", 42, "volts") != 9) return 3;
    rewind(file);
    if (fscanf(file, "%d %7s", &number, word) != 2 || number != 42 || strcmp(word, "volts") != 0) return 4;
    if (fclose(file) != 0 || remove(name) != 0) return 5;
    if (fopen(name, "r") != NULL || TOLLAN_ERRNO == 0) return 6;
    if (setvbuf(stdout, NULL, _IOFBF, BUFSIZ) != 0 || fflush(NULL) != 0) return 7;
    return 0;
}
