/* The least that any filter costs: a program that loads libcups and does nothing. */
int main(void)
{
    return 0;
}
