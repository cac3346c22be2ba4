#include "support/process/scenarios.h"

int main(int argc, char** argv)
{
    return marlune::test::run_scenario_or_tests(argc, argv);
}
