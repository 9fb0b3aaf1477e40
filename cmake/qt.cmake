# The Qt face, the program and the guided tour, with their tests.
