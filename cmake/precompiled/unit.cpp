// Carries the precompiled headers of its kind: see cmake/Precompiled.cmake.
int main() {}
