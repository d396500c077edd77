// CMake builds a precompiled header only as part of a target; this is its source.
int main() {}
