#include "server/types/messages.h"

#include <algorithm>
#include <iterator>

namespace dbkeeper::server {
namespace {

struct MessageRow {
  int number;
  int severity;
  int state;
  std::string_view text;
};

// In order of their numbers.
constexpr MessageRow kMessages[] = {
    {103, 15, 7, "The identifier that starts with '%1' is too long. Maximum length is 128."},
    {104, 15, 1,
     "ORDER BY items must appear in the select list if the statement contains a UNION operator."},
    {105, 15, 1, "Unclosed quotation mark before the character string '%1'."},
    {107, 16, 2,
     "The column prefix '%1' does not match with a table name or alias name used in the query."},
    {108, 16, 1,
     "The ORDER BY position number %1 is out of range of the number of items in the select list."},
    {109, 15, 1,
     "There are more columns in the INSERT statement than values specified in the VALUES clause. "
     "The number of values in the VALUES clause must match the number of columns specified in the "
     "INSERT statement."},
    {110, 15, 1,
     "There are fewer columns in the INSERT statement than values specified in the VALUES clause. "
     "The number of values in the VALUES clause must match the number of columns specified in the "
     "INSERT statement."},
    {111, 15, 1, "'%1' must be the first statement in a query batch."},
    {113, 15, 1, "Missing end comment mark '*/'."},
    {116, 15, 1,
     "Only one expression can be specified in the select list when the subquery is not introduced "
     "with EXISTS."},
    {117, 15, 1,
     "The %1 name '%2' contains more than the maximum number of prefixes. The maximum is 3."},
    {119, 15, 1,
     "Must pass parameter number %1 and subsequent parameters as '@name = value'. After the form "
     "'@name = value' has been used, all subsequent parameters must be passed in the form '@name = "
     "value'."},
    {120, 15, 1,
     "The select list for the INSERT statement contains fewer items than the insert list. The "
     "number of SELECT values must match the number of INSERT columns."},
    {121, 15, 1,
     "The select list for the INSERT statement contains more items than the insert list. The "
     "number of SELECT values must match the number of INSERT columns."},
    {128, 15, 1,
     "The name '%1' is not permitted in this context. Only constants, expressions, or variables "
     "allowed here. Column names are not permitted."},
    {130, 15, 1,
     "Cannot perform an aggregate function on an expression containing an aggregate or a "
     "subquery."},
    {131, 15, 3,
     "The size (%1) given to the type '%2' exceeds the maximum allowed for any data type (%3)."},
    {137, 15, 2, "Must declare the variable '%1'."},
    {145, 15, 1, "ORDER BY items must appear in the select list if SELECT DISTINCT is specified."},
    {147, 15, 1,
     "An aggregate may not appear in the WHERE clause unless it is in a subquery contained in a "
     "HAVING clause or a select list, and the column being aggregated is an outer reference."},
    {148, 15, 1, "Incorrect time syntax in time string '%1' used with WAITFOR."},
    {155, 15, 1, "'%1' is not a recognized %2 option."},
    {156, 15, 1, "Incorrect syntax near the keyword '%1'."},
    {164, 15, 1, "GROUP BY expressions must refer to column names that appear in the select list."},
    {170, 15, 1, "Line %2: Incorrect syntax near '%1'."},
    {174, 15, 1, "The %1 function requires %2 arguments."},
    {189, 15, 1, "The %1 function requires %2 to %3 arguments."},
    {191, 15, 1,
     "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into "
     "smaller queries."},
    {192, 15, 1, "The scale must be less than or equal to the precision."},
    {195, 15, 10, "'%1' is not a recognized %2."},
    {201, 16, 3, "Procedure '%1' expects parameter '%2', which was not supplied."},
    {205, 16, 1,
     "All queries in an SQL statement containing a UNION operator must have an equal number of "
     "expressions in their target lists."},
    {207, 16, 3, "Invalid column name '%1'."},
    {208, 16, 1, "Invalid object name '%1'."},
    {209, 16, 1, "Ambiguous column name '%1'."},
    {213, 16, 4,
     "Insert Error: Column name or number of supplied values does not match table definition."},
    {220, 16, 1, "Arithmetic overflow error for data type %1, value = %2."},
    {226, 16, 6, "%1 statement not allowed within multi-statement transaction."},
    {229, 14, 5, "%1 permission denied on object '%2', database '%3', owner '%4'."},
    {232, 16, 1, "Arithmetic overflow error for type %1, value = %2."},
    {234, 16, 2, "There is insufficient result space to convert a money value to %1."},
    {235, 16, 0, "Cannot convert a char value to money. The char value has incorrect syntax."},
    {241, 16, 1, "Syntax error converting datetime from character string."},
    {242, 16, 3,
     "The conversion of a char data type to a datetime data type resulted in an out-of-range "
     "datetime value."},
    {244, 16, 1,
     "The conversion of the %1 value '%2' overflowed an %3 column. Use a larger integer column."},
    {245, 16, 1, "Syntax error converting the %1 value '%2' to a column of data type %3."},
    {248, 16, 1,
     "The conversion of the %1 value '%2' overflowed an int column. Maximum integer value "
     "exceeded."},
    {257, 16, 3,
     "Implicit conversion from data type %1 to %2 is not allowed. Use the CONVERT function to run "
     "this query."},
    {259, 16, 2,
     "Ad hoc updates to system catalogs are not enabled. The system administrator must reconfigure "
     "SQL Server to allow this."},
    {262, 14, 1, "%1 permission denied in database '%2'."},
    {263, 16, 1, "Must specify table to select from."},
    {264, 16, 1,
     "Column name '%1' appears more than once in the result column list. A column cannot be "
     "assigned more than one value in the same clause. Modify the clause to make sure that a "
     "column is updated only once."},
    {272, 16, 1, "Cannot update a timestamp column."},
    {273, 16, 1,
     "Cannot insert a non-null value into a timestamp column. Use INSERT with a column list or "
     "with a default of NULL for the timestamp column."},
    {281, 16, 1, "%1 is not a valid style number when converting from %2 to a character string."},
    {295, 16, 3, "Syntax error converting character string to smalldatetime data type."},
    {296, 16, 3,
     "The conversion of char data type to smalldatetime data type resulted in an out-of-range "
     "smalldatetime value."},
    {298, 16, 1,
     "The conversion from datetime data type to smalldatetime data type resulted in a "
     "smalldatetime overflow error."},
    {306, 16, 1,
     "The text, ntext, and image data types cannot be compared or sorted, except when using IS "
     "NULL or LIKE operator."},
    {403, 16, 1, "Invalid operator for data type. Operator equals %1, type equals %2."},
    {409, 16, 2, "The %1 operation cannot take a %2 data type as an argument."},
    {421, 16, 1, "The %1 data type cannot be selected as DISTINCT because it is not comparable."},
    {506, 16, 1, "Invalid escape character '%1' was specified in a LIKE predicate."},
    {512, 16, 1,
     "Subquery returned more than 1 value. This is not permitted when the subquery follows =, !=, "
     "<, <= , >, >= or when the subquery is used as an expression."},
    {515, 16, 2,
     "Cannot insert the value NULL into column '%1', table '%2'; column does not allow nulls. %3 "
     "fails."},
    {517, 16, 1, "Adding a value to a '%1' column caused overflow."},
    {529, 16, 1, "Explicit conversion from data type %1 to %2 is not allowed."},
    {535, 16, 1, "Difference of two datetime columns caused overflow at runtime."},
    {536, 16, 3, "Invalid length parameter passed to the substring function."},
    {544, 16, 1,
     "Cannot insert explicit value for identity column in table '%1' when IDENTITY_INSERT is set "
     "to OFF."},
    {545, 16, 1,
     "Explicit value must be specified for identity column in table '%1' when IDENTITY_INSERT is "
     "set to ON."},
    {547, 16, 1,
     "%1 statement conflicted with %2 constraint '%3'. The conflict occurred in database '%4', "
     "table '%5'%6."},
    {701, 19, 1, "There is insufficient system memory to run this query.%1"},
    {823, 16, 1, "I/O error detected in the database file."},
    {911, 16, 1,
     "Could not locate entry in sysdatabases for database '%1'. No entry found with that name. "
     "Make sure that the name is entered correctly."},
    {916, 14, 1, "Server user '%1' is not a valid user in database '%2'."},
    {923, 14, 1,
     "Database '%1' is in restricted mode. Only the database owner and members of the dbcreator "
     "and sysadmin roles can access it."},
    {924, 14, 1, "Database '%1' is already open and can only have one user at a time."},
    {927, 14, 2, "Database '%1' cannot be opened. It is in the middle of a restore."},
    {942, 14, 4, "Database '%1' cannot be opened because it is offline."},
    {1001, 15, 1, "Line %2: Length or precision specification %1 is invalid."},
    {1007, 15, 1,
     "The number '%1' is out of the range for numeric representation (maximum precision 38)."},
    {1011, 15, 1, "The correlation name '%1' is specified multiple times in a FROM clause."},
    {1013, 15, 1,
     "Tables or functions '%1' and '%1' have the same exposed names. Use correlation names to "
     "distinguish them."},
    {1033, 15, 1,
     "The ORDER BY clause is invalid in views, inline functions, derived tables, and subqueries, "
     "unless TOP is also specified."},
    {1038, 15, 3, "Cannot use empty object or column names. Use a single space if necessary."},
    {1046, 15, 1,
     "Subqueries are not allowed in this context. Only scalar expressions are allowed."},
    {1060, 15, 1, "The number of rows in the TOP clause must be an integer."},
    {1088, 16, 12, "Cannot find object '%1'."},
    {1105, 17, 2, "Could not allocate space: the disk is full."},
    {1205, 13, 50,
     "Your transaction (process ID #%1) was deadlocked with another process and has been chosen as "
     "the deadlock victim. Rerun your transaction."},
    {1222, 16, 51, "Lock request time out period exceeded."},
    {1505, 14, 1,
     "CREATE UNIQUE INDEX terminated because a duplicate key was found for index ID %1. Most "
     "significant primary key is '%2'."},
    {1767, 16, 1, "Foreign key '%1' references invalid table '%2'."},
    {1769, 16, 1, "Foreign key '%1' references invalid column '%2' in referencing table '%3'."},
    {1770, 16, 1, "Foreign key '%1' references invalid column '%2' in referenced table '%3'."},
    {1773, 16, 1,
     "Foreign key '%1' has implicit reference to object '%2' which does not have a primary key "
     "defined on it."},
    {1776, 16, 1,
     "There are no primary or candidate keys in the referenced table '%1' that match the "
     "referencing column list in the foreign key '%2'."},
    {1778, 16, 1,
     "Column '%1.%2' is not the same data type as referencing column '%3.%4' in foreign key '%5'."},
    {1779, 16, 1, "Table '%1' already has a primary key defined on it."},
    {1781, 16, 1, "Column already has a DEFAULT bound to it."},
    {1801, 16, 3, "Database '%1' already exists."},
    {1802, 16, 1,
     "CREATE DATABASE failed. Some file names listed could not be created. Check previous errors."},
    {1813, 16, 2, "Could not open new database '%1'. CREATE DATABASE is aborted."},
    {1828, 16, 3, "The file named '%1' is already in use. Choose another name."},
    {1829, 16, 4, "The FOR ATTACH option requires that at least the primary file be specified."},
    {1834, 16, 1, "The file '%1' cannot be overwritten. It is being used by another database."},
    {1902, 16, 3,
     "Cannot create more than one clustered index on table '%1'. Drop the existing clustered index "
     "'%2' before creating another."},
    {1907, 16, 1,
     "Cannot recreate index '%1'. The new index definition does not match the constraint being "
     "enforced by the existing index."},
    {1909, 16, 1,
     "Cannot use duplicate column names in index key list. Column name '%1' listed more than "
     "once."},
    {1911, 16, 1, "Column name '%1' does not exist in the target table."},
    {1913, 16, 1, "There is already an index on table '%1' named '%2'."},
    {1919, 16, 1, "Column '%1' is of a type that is invalid for use as a key column in an index."},
    {2528, 10, 1,
     "DBCC execution completed. If DBCC printed error messages, contact your system "
     "administrator."},
    {2601, 14, 3, "Cannot insert duplicate key row in object '%1' with unique index '%2'."},
    {2627, 14, 2, "Violation of %1 constraint '%2'. Cannot insert duplicate key in object '%3'."},
    {2705, 16, 3,
     "Column names in each table must be unique. Column name '%1' in table '%2' is specified more "
     "than once."},
    {2714, 16, 6, "There is already an object named '%1' in the database."},
    {2715, 16, 6, "Column or parameter #%1: Cannot find data type %2."},
    {2716, 16, 1, "Column or parameter #%1: Cannot specify a column width on data type %2."},
    {2744, 16, 2,
     "Multiple identity columns specified for table '%1'. Only one identity column per table is "
     "allowed."},
    {2749, 16, 2,
     "Identity column '%1' must be of data type int, bigint, smallint, tinyint, or decimal or "
     "numeric with a scale of 0, and constrained to be nonnullable."},
    {2750, 16, 1,
     "Column or parameter #%1: Specified column precision %2 is greater than the maximum precision "
     "of %3."},
    {2758, 16, 1, "RAISERROR could not locate entry for error %1 in sysmessages."},
    {2786, 16, 1,
     "The data type of substitution parameter %1 does not match the expected type of the format "
     "specification."},
    {2812, 16, 62, "Could not find stored procedure '%1'."},
    {3013, 16, 1, "%1 is terminating abnormally."},
    {3014, 10, 1, "%1 successfully processed %2 pages in %3 seconds (%4 MB/sec)."},
    {3021, 16, 0, "Cannot perform a backup or restore operation within a transaction."},
    {3101, 16, 2, "Exclusive access could not be obtained because the database is in use."},
    {3102, 16, 1,
     "RESTORE cannot process database '%1' because it is in use by this session. It is recommended "
     "that the master database be used when performing this operation."},
    {3110, 14, 1, "User does not have permission to RESTORE database '%1'."},
    {3147, 16, 3, "Backup and restore operations are not allowed on database tempdb."},
    {3154, 16, 2,
     "The backup set holds a backup of a database other than the existing '%1' database."},
    {3156, 16, 1,
     "File '%1' cannot be restored to '%2'. Use WITH MOVE to identify a valid location for the "
     "file. %3"},
    {3176, 16, 1,
     "File '%1' is claimed by more than one file of the backup set. The WITH MOVE clause can be "
     "used to relocate one or more files."},
    {3201, 16, 2,
     "Cannot open backup device '%1'. Device error or device off-line. See the SQL Server error "
     "log for more details."},
    {3202, 16, 1, "Write failed: %1, status = %2."},
    {3203, 16, 1, "Read failed: %1, status = %2."},
    {3206, 16, 1,
     "No entry in sysdevices for backup device '%1'. Update sysdevices and rerun statement."},
    {3234, 16, 2,
     "Logical file '%1' is not part of database '%2'. Use RESTORE FILELISTONLY to list the logical "
     "file names."},
    {3241, 16, 0,
     "The media family on device '%1' is incorrectly formed. SQL Server cannot process this media "
     "family."},
    {3262, 10, 1, "The backup set is valid."},
    {3287, 16, 1, "The file ID %1 on device '%2' is not valid."},
    {3617, 16, 1, "Operation cancelled by user."},
    {3621, 0, 1, "The statement has been terminated."},
    {3623, 16, 1, "A domain error occurred."},
    {3701, 11, 5, "Cannot drop the %1 '%2', because it does not exist in the system catalog."},
    {3702, 16, 3, "Cannot drop the database '%1' because it is currently in use."},
    {3703, 16, 2, "Cannot detach the database '%1' because it is currently in use."},
    {3705, 16, 1, "Cannot use DROP %1 with '%2' because '%2' is a %3. Use DROP %4."},
    {3708, 16, 1, "Cannot drop the %1 '%2' because it is a system %1."},
    {3723, 16, 4,
     "An explicit DROP INDEX is not allowed on index '%1'. It is being used for %2 constraint "
     "enforcement."},
    {3725, 16, 1,
     "The constraint '%1' is being referenced by table '%2', foreign key constraint '%3'."},
    {3726, 16, 1,
     "Could not drop object '%1' because it is referenced by a FOREIGN KEY constraint."},
    {3728, 16, 1, "'%1' is not a constraint."},
    {3733, 16, 2, "Constraint '%1' does not belong to table '%2'."},
    {3902, 16, 1, "The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION."},
    {3903, 16, 1, "The ROLLBACK TRANSACTION request has no corresponding BEGIN TRANSACTION."},
    {3906, 16, 1,
     "Could not run BEGIN TRANSACTION in database '%1' because the database is read-only."},
    {3998, 16, 1, "The open transaction was rolled back with the statement."},
    {4035, 10, 1, "Processed %1 pages for database '%2', file '%3' on file %4."},
    {4060, 11, 1, "Cannot open database requested in login '%1'. Login fails."},
    {4064, 11, 1, "Cannot open user default database. Login failed."},
    {4407, 16, 2, "View or function '%1' contains too deep a nesting of views."},
    {4506, 16, 1,
     "Column names in each view or function must be unique. Column name '%1' in view or function "
     "'%2' is specified more than once."},
    {4511, 16, 1,
     "Create View or Function failed because no column name was specified for column %1."},
    {4604, 16, 1, "There is no such user or group '%1'."},
    {4606, 16, 1, "Granted or revoked privilege %1 is not compatible with object."},
    {4613, 16, 1, "Grantor does not have GRANT permission."},
    {4701, 16, 1,
     "Could not truncate table '%1' because this table does not exist in database '%2'."},
    {4712, 16, 1,
     "Cannot truncate table '%1' because it is being referenced by a FOREIGN KEY constraint."},
    {4901, 16, 1,
     "ALTER TABLE only allows columns to be added that can contain nulls or have a DEFAULT "
     "definition specified. Column '%1' cannot be added to table '%2' because it does not allow "
     "nulls and does not specify a DEFAULT definition."},
    {4902, 16, 1, "Cannot alter table '%1' because this table does not exist in database '%2'."},
    {4917, 16, 1, "Constraint '%1' does not exist."},
    {4922, 16, 3,
     "ALTER TABLE %1 COLUMN %2 failed because one or more objects access this column."},
    {4923, 16, 1,
     "ALTER TABLE DROP COLUMN failed because '%1' is the only data column in table '%2'. A table "
     "must have at least one data column."},
    {4924, 16, 1, "ALTER TABLE %1 COLUMN failed because column '%2' does not exist in table '%3'."},
    {4928, 16, 1, "Cannot alter column '%1' because it is '%2'."},
    {5009, 16, 1,
     "ALTER DATABASE failed. Some disk names listed in the statement were not found. Check that "
     "the names exist and are spelled correctly before rerunning the statement."},
    {5011, 14, 2,
     "User does not have permission to alter database '%1' or the database does not exist."},
    {5016, 16, 1, "Cannot change the name of the system database '%1'."},
    {5030, 16, 1, "The database could not be exclusively locked to perform the operation."},
    {5058, 16, 1, "Option '%1' cannot be set in database '%2'."},
    {5070, 16, 2, "Database state cannot be changed while other users are using the database '%1'"},
    {5074, 16, 3, "The %1 '%2' is dependent on column '%3'."},
    {5103, 16, 1, "MAXSIZE cannot be less than SIZE for file '%1'."},
    {5104, 16, 1, "File '%1' already used."},
    {5105, 16, 2, "Device activation error. The physical file name '%1' may be incorrect."},
    {5123, 16, 1, "CREATE FILE encountered operating system error %2: %1."},
    {5169, 16, 1, "FILEGROWTH cannot be greater than MAXSIZE for file '%1'."},
    {5170, 16, 1, "Cannot create file '%1' because it already exists."},
    {5171, 16, 1, "'%1' is not a primary database file."},
    {5173, 16, 1, "Cannot associate files with different databases."},
    {5174, 16, 1, "Each file size must be greater than or equal to 512 KB."},
    {5701, 0, 1, "Changed database context to '%1'."},
    {5703, 0, 1, "Changed language setting to %1."},
    {6005, 10, 1, "SHUTDOWN is in progress by login %1."},
    {6101, 16, 1, "Process ID %1 is not a valid process ID. Choose a number between 1 and %2."},
    {6104, 16, 1, "Cannot use KILL to kill your own process."},
    {6106, 16, 2, "Process ID %1 is not an active process ID."},
    {7202, 11, 2,
     "Could not find server '%1' in sysservers. Execute sp_addlinkedserver to add the server to "
     "sysservers."},
    {7940, 16, 1, "System databases master, model, msdb, and tempdb cannot be detached."},
    {7992, 16, 1, "Cannot shrink 'read only' databases."},
    {8102, 16, 1, "Cannot update identity column '%1'."},
    {8106, 16, 1, "Table '%1' does not have the identity property. Cannot perform SET operation."},
    {8107, 16, 1,
     "IDENTITY_INSERT is already ON for table '%1'. Cannot perform SET operation for table '%2'."},
    {8110, 16, 0, "Cannot add multiple PRIMARY KEY constraints to table '%1'."},
    {8111, 16, 1, "Cannot define PRIMARY KEY constraint on nullable column in table '%1'."},
    {8114, 16, 5, "Error converting data type %1 to %2."},
    {8115, 16, 2, "Arithmetic overflow error converting %1 to data type %2."},
    {8116, 16, 1, "Argument data type %1 is invalid for argument %2 of %3 function."},
    {8117, 16, 1, "Operand data type %1 is invalid for %2 operator."},
    {8118, 16, 1,
     "Column '%1' is invalid in the select list because it is not contained in an aggregate "
     "function and there is no GROUP BY clause."},
    {8120, 16, 1,
     "Column '%1' is invalid in the select list because it is not contained in either an aggregate "
     "function or the GROUP BY clause."},
    {8121, 16, 1,
     "Column '%1' is invalid in the HAVING clause because it is not contained in either an "
     "aggregate function or the GROUP BY clause."},
    {8127, 16, 1,
     "Column name '%1' is invalid in the ORDER BY clause because it is not contained in either an "
     "aggregate function or the GROUP BY clause."},
    {8134, 16, 1, "Divide by zero error encountered."},
    {8144, 16, 2, "Procedure or function %1 has too many arguments specified."},
    {8145, 16, 2, "%1 is not a parameter for procedure %2."},
    {8152, 16, 9, "String or binary data would be truncated."},
    {8155, 16, 2, "No column was specified for column %1 of '%2'."},
    {8156, 16, 1, "The column '%1' was specified multiple times for '%2'."},
    {8158, 16, 1, "'%1' has more columns than were specified in the column list."},
    {8159, 16, 1, "'%1' has fewer columns than were specified in the column list."},
    {8169, 16, 2, "Syntax error converting from a character string to uniqueidentifier."},
    {8170, 16, 2, "Insufficient result space to convert uniqueidentifier value to char."},
    {8178, 16, 1, "Prepared statement expects parameter %1, which was not supplied."},
    {8179, 16, 2, "Could not find prepared statement with handle %1."},
    {14226, 0, 1, "%1 history entries purged."},
    {14234, 16, 1, "The specified '%1' is invalid (valid values are returned by %2)."},
    {14235, 16, 1,
     "The specified '%1' is invalid (valid values are greater than 0 but excluding %2)."},
    {14236, 0, 1, "Warning: Non-existent step referenced by %1."},
    {14243, 0, 1, "Job '%1' started successfully."},
    {14254, 0, 1, "Job '%1' stopped successfully."},
    {14256, 16, 1,
     "Cannot start job '%1' (ID %2) since it does not have any job server(s) defined. Associate "
     "the "
     "job with a job server by calling sp_add_jobserver."},
    {14261, 16, 1, "The specified %1 ('%2') already exists."},
    {14262, 16, 1, "The specified %1 ('%2') does not exist."},
    {14266, 16, 1, "The specified '%1' is invalid (valid values are: %2)."},
    {14269, 16, 1, "Job '%1' is already targeted at server '%2'."},
    {14270, 16, 1, "Job '%1' is not currently targeted at server '%2'."},
    {14278, 16, 1, "Schedule error: %1"},
    {14287, 16, 1, "The '%1' supplied has an invalid %2."},
    {14288, 16, 1, "%1 cannot be before %2."},
    {14294, 16, 1, "Supply either %1 or %2 to identify the job."},
    {14515, 16, 1,
     "Only a member of the sysadmin server role can add a job for a different owner with "
     "@owner_login_name."},
    {14525, 16, 1,
     "Only members of sysadmin role are allowed to update or delete jobs owned by a different "
     "login."},
    {15006, 16, 1, "'%1' is not a valid name because it contains invalid characters."},
    {15007, 16, 1, "The login '%1' does not exist."},
    {15008, 16, 1, "User '%1' does not exist in the current database."},
    {15009, 16, 1, "The object '%1' does not exist in database '%2'."},
    {15010, 16, 1, "The database '%1' does not exist. Use sp_helpdb to show available databases."},
    {15011, 16, 1, "Database option '%1' does not exist."},
    {15012, 16, 1, "The device '%1' does not exist. Use sp_helpdevice to show available devices."},
    {15014, 16, 1, "The role '%1' does not exist in the current database."},
    {15023, 16, 1, "User or role '%1' already exists in the current database."},
    {15025, 16, 1, "The login '%1' already exists."},
    {15026, 16, 1, "Logical device '%1' already exists."},
    {15033, 16, 1, "'%1' is not a valid official language name."},
    {15061, 16, 1,
     "The add device request was denied. A physical device named '%1' already exists. Only one "
     "backup device may refer to any physical device name."},
    {15063, 16, 1, "The login already has an account under a different user name."},
    {15097, 16, 1,
     "The size associated with an extended property cannot be more than 7,500 bytes."},
    {15135, 16, 1,
     "Object is invalid. Extended properties are not permitted on '%1', or the object does not "
     "exist."},
    {15144, 16, 1, "The role has members. It must be empty before it can be dropped."},
    {15174, 16, 1,
     "Login '%1' owns one or more database(s). Change the owner of the following database(s) "
     "before "
     "dropping login: %2"},
    {15175, 16, 1,
     "Login '%1' is aliased or mapped to a user in one or more database(s). Drop the user or "
     "alias before dropping the login."},
    {15183, 16, 1, "The user owns objects in the database and cannot be dropped."},
    {15197, 16, 1, "There is no text for object '%1'."},
    {15211, 16, 1, "Old (current) password incorrect for user. The password was not changed."},
    {15217, 16, 1, "Property cannot be updated or deleted. Property '%1' does not exist for '%2'."},
    {15233, 16, 1, "Property cannot be added. Property '%1' already exists for '%2'."},
    {15241, 16, 1, "Usage: sp_dboption [dbname [,optname [,'true' | 'false']]]"},
    {15247, 16, 1, "User does not have permission to perform this action."},
    {15248, 11, 1,
     "Either the parameter @objname is ambiguous or the claimed @objtype (%1) is wrong."},
    {15249, 11, 1, "Explicit @itemtype '%1' is unrecognized (%2)."},
    {15298, 0, 1, "New login created."},
    {15335, 11, 1,
     "Error: The @newname value '%1' is already in use as a %2 name and would cause a duplicate "
     "that is not permitted."},
    {15336, 16, 1,
     "Object '%1' cannot be renamed because the object participates in enforced dependencies."},
    {15341, 0, 1, "Granted database access to '%1'."},
    {15342, 0, 1, "User has been dropped from current database."},
    {15401, 11, 1, "Windows NT user or group '%1' not found. Check the name again."},
    {15402, 11, 1, "'%1' is not a fixed server role."},
    {15405, 11, 1, "Cannot use the reserved user or role name '%1'."},
    {15407, 11, 1,
     "'%1' is not a valid Windows NT name. Give the complete name: <domain\\username>."},
    {15410, 11, 1, "User or role '%1' does not exist in this database."},
    {15412, 11, 1, "'%1' is not a known fixed role."},
    {15413, 11, 1, "Cannot make a role a member of itself."},
    {15414, 16, 1, "Cannot add the role '%1' to itself."},
    {15421, 16, 1, "The user owns role(s) and cannot be dropped."},
    {15424, 0, 1, "New role added."},
    {15425, 0, 1, "Role dropped."},
    {15434, 16, 1, "Could not drop login '%1' as the user is currently logged in."},
    {15461, 0, 1, "Default database changed."},
    {15462, 0, 1, "%1's default language is changed to %2."},
    {15463, 0, 1, "Device dropped."},
    {15472, 0, 1, "The object does not have any indexes."},
    {15477, 0, 1,
     "Caution: Changing any part of an object name could break scripts and stored procedures."},
    {15478, 0, 1, "Password changed."},
    {15479, 0, 1, "Login dropped."},
    {15485, 0, 1, "Granted login access to '%1'."},
    {15486, 0, 1, "Revoked login access from '%1'."},
    {15488, 0, 1, "'%1' added to role '%2'."},
    {15489, 0, 1, "'%1' dropped from role '%2'."},
    {15600, 15, 1, "An invalid parameter or option was specified for procedure '%1'."},
    {15622, 10, 1, "No permission to access database '%1'."},
    {16902, 16, 1, "%1: The value of the parameter '%2' is invalid."},
    {16909, 16, 1, "%1: The cursor identifier value provided (%2) is not valid."},
    {16929, 16, 1, "The cursor is READ ONLY."},
    {16931, 16, 1, "There are no rows in the current fetch buffer."},
    {16947, 16, 1, "No rows were updated or deleted."},
    {16955, 16, 2, "Could not create an acceptable cursor."},
    {18456, 14, 1, "Login failed for user '%1'.%2"},
    {22022, 16, 1, "SQLServerAgent Error: %1"},
    {50001, 16, 1, "The local server does not support %1."},
    {50002, 16, 1, "The local server could not run the statement: %1"},
    {50011, 0, 1, "The local server keeps %1 '%2' as text but does not run it."},
    {50012, 16, 1, "The local server keeps procedure '%1' as text and cannot run it."},
    {50013, 16, 1,
     "Database '%1' is older than the local server, which takes kana for equal whatever their type "
     "and width. It cannot be opened, because rows of table '%2' have become duplicates by that."},
};

// After these the rest of the batch is not run: what could not be resolved, and conversions.
constexpr int kBatchEnding[] = {105, 156, 170, 207,  208,  241,  242,  245, 911,
                                916, 924, 942, 1205, 2714, 3617, 4902, 8114};

// Conversions and deadlocks.
constexpr int kTransactionEnding[] = {241, 242, 245, 1205, 8114};

std::string Fill(std::string_view text, std::initializer_list<std::string_view> parts) {
  std::string filled;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_place =
        text[i] == '%' && i + 1 < text.size() && text[i + 1] >= '1' && text[i + 1] <= '9';
    if (!is_place) {
      filled += text[i];
      continue;
    }
    const auto index = static_cast<std::size_t>(text[++i] - '1');
    if (index < parts.size()) filled += *(parts.begin() + index);
  }
  return filled;
}

}  // namespace

ServerMessage MakeMessage(int number, std::initializer_list<std::string_view> parts, int line) {
  const auto* const row = std::ranges::lower_bound(kMessages, number, {}, &MessageRow::number);
  ServerMessage message;
  message.number = number;
  message.line = line;
  message.severity = row->severity;
  message.state = row->state;
  message.text = Fill(row->text, parts);
  return message;
}

SqlError MakeError(int number, std::initializer_list<std::string_view> parts, int line) {
  return SqlError(MakeMessage(number, parts, line));
}

void Fail(int number, std::initializer_list<std::string_view> parts) {
  throw MakeError(number, parts);
}

SqlError Unsupported(std::string_view construct, int line) {
  return MakeError(50001, {construct}, line);
}

bool EndsBatch(int number) {
  return std::ranges::find(kBatchEnding, number) != std::end(kBatchEnding);
}

bool EndsTransaction(int number) {
  return std::ranges::find(kTransactionEnding, number) != std::end(kTransactionEnding);
}

}  // namespace dbkeeper::server
