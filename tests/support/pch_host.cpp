// Compiles the precompiled headers that the test programs share; holds no test.
