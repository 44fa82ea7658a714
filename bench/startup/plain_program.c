/* The baseline for process start-up: a program that links nothing of ours. */
int main(void)
{
    return 0;
}
