// An empty library. The tests only check whether the system finds it by name.

extern "C" __declspec(dllexport) int wanted_answer()
{
    return 42;
}
