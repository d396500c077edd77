// Gives a precompiled header a target that it belongs to.
int main() {}
