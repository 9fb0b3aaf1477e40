# The database session over ODBC, with its tests.
