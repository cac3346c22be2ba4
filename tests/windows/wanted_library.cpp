// Found or not found by its name: that is all that it is for.

extern "C" __declspec(dllexport) int wanted_answer()
{
    return 42;
}
