#include "support/library.h"

int main(int argc, char** argv)
{
    return marlune::test::run_tests(argc, argv);
}
