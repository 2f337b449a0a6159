// Compiles the precompiled headers that the cores and the Qt-side libraries share; holds no code.
