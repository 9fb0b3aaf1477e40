# Floors 0 to 4: the C++ standard library and nothing else.
