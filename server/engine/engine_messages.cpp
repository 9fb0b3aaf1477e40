#include "server/engine/engine_messages.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "server/types/messages.h"

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
    {148, 15, 1, "Incorrect time syntax in time string '%1' used with WAITFOR."},
    {201, 16, 3, "Procedure '%1' expects parameter '%2', which was not supplied."},
    {226, 16, 6, "%1 statement not allowed within multi-statement transaction."},
    {229, 14, 5, "%1 permission denied on object '%2', database '%3', owner '%4'."},
    {230, 14, 1, "%1 permission denied on column '%2' of object '%3'."},
    {259, 16, 2,
     "Ad hoc updates to system catalogs are not enabled. The system administrator must reconfigure "
     "SQL Server to allow this."},
    {262, 14, 1, "%1 permission denied in database '%2'."},
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
    {1088, 16, 12, "Cannot find object '%1'."},
    {1205, 13, 50,
     "Your transaction (process ID #%1) was deadlocked with another process and has been chosen "
     "as the deadlock victim. Rerun your transaction."},
    {1222, 16, 51, "Lock request time out period exceeded."},
    {1505, 14, 1,
     "CREATE UNIQUE INDEX terminated because a duplicate key was found for index ID %1. Most "
     "significant primary key is '%2'."},
    {1701, 16, 1,
     "Creation of table '%1' failed because the row size would be %2, including internal "
     "overhead. This exceeds the maximum allowable table row size, %3."},
    {1750, 16, 1, "Could not create constraint. See previous errors."},
    {1753, 16, 1,
     "Column '%1.%2' is not the same length as referencing column '%3.%4' in foreign key '%5'."},
    {1759, 16, 1,
     "Invalid column '%1' is specified in a constraint or computed-column definition."},
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
     "Cannot create more than one clustered index on table '%1'. Drop the existing clustered "
     "index '%2' before creating another."},
    {1909, 16, 1,
     "Cannot use duplicate column names in index key list. Column name '%1' listed more than "
     "once."},
    {1911, 16, 1, "Column name '%1' does not exist in the target table."},
    {1913, 16, 1, "There is already an index on table '%1' named '%2'."},
    {1919, 16, 1, "Column '%1' is of a type that is invalid for use as a key column in an index."},
    {2528, 10, 1,
     "DBCC execution completed. If DBCC printed error messages, contact your system "
     "administrator."},
    {2714, 16, 6, "There is already an object named '%1' in the database."},
    {2744, 16, 2,
     "Multiple identity columns specified for table '%1'. Only one identity column "
     "per table is allowed."},
    {2749, 16, 2,
     "Identity column '%1' must be of data type int, bigint, smallint, tinyint, or decimal or "
     "numeric with a scale of 0, and constrained to be nonnullable."},
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
    {3621, 0, 1, "The statement has been terminated."},
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
    {3727, 16, 1, "Could not drop constraint. See previous errors."},
    {3728, 16, 1, "'%1' is not a constraint."},
    {3733, 16, 2, "Constraint '%1' does not belong to table '%2'."},
    {3902, 16, 1, "The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION."},
    {3903, 16, 1, "The ROLLBACK TRANSACTION request has no corresponding BEGIN TRANSACTION."},
    {3906, 16, 1,
     "Could not run BEGIN TRANSACTION in database '%1' because the database is "
     "read-only."},
    {3998, 16, 1, "The open transaction was rolled back with the statement."},
    {4035, 10, 1, "Processed %1 pages for database '%2', file '%3' on file %4."},
    {4060, 11, 1, "Cannot open database requested in login '%1'. Login fails."},
    {4064, 11, 1, "Cannot open user default database. Login failed."},
    {4606, 16, 1, "Granted or revoked privilege %1 is not compatible with object."},
    {4613, 16, 1, "Grantor does not have GRANT permission."},
    {4701, 16, 1,
     "Could not truncate table '%1' because this table does not exist in database "
     "'%2'."},
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
    {4924, 16, 1,
     "ALTER TABLE %1 COLUMN failed because column '%2' does not exist in table "
     "'%3'."},
    {4928, 16, 1, "Cannot alter column '%1' because it is '%2'."},
    {5009, 16, 1,
     "ALTER DATABASE failed. Some disk names listed in the statement were not found. Check that "
     "the names exist and are spelled correctly before rerunning the statement."},
    {5011, 14, 2,
     "User does not have permission to alter database '%1' or the database does not exist."},
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
    {6005, 10, 1, "SHUTDOWN is in progress by login %1."},
    {6101, 16, 1, "Process ID %1 is not a valid process ID. Choose a number between 1 and %2."},
    {6104, 16, 1, "Cannot use KILL to kill your own process."},
    {6106, 16, 2, "Process ID %1 is not an active process ID."},
    {6401, 16, 1, "Cannot roll back %1. No transaction or savepoint of that name was found."},
    {7202, 11, 2,
     "Could not find server '%1' in sysservers. Execute sp_addlinkedserver to add the server to "
     "sysservers."},
    {7940, 16, 1, "System databases master, model, msdb, and tempdb cannot be detached."},
    {7992, 16, 1, "Cannot shrink 'read only' databases."},
    {8106, 16, 1, "Table '%1' does not have the identity property. Cannot perform SET operation."},
    {8107, 16, 1,
     "IDENTITY_INSERT is already ON for table '%1'. Cannot perform SET operation for table "
     "'%2'."},
    {8110, 16, 1, "Cannot add multiple PRIMARY KEY constraints to table '%1'."},
    {8111, 16, 1, "Cannot define PRIMARY KEY constraint on nullable column in table '%1'."},
    {8144, 16, 2, "Procedure or function %1 has too many arguments specified."},
    {8145, 16, 2, "%1 is not a parameter for procedure %2."},
    {14234, 16, 1, "The specified '%1' is invalid (valid values are returned by %2)."},
    {14260, 16, 1,
     "You do not have sufficient permission to run this command. Contact your system "
     "administrator."},
    {14261, 16, 1, "The specified %1 ('%2') already exists."},
    {14262, 16, 1, "The specified %1 ('%2') does not exist."},
    {14269, 16, 1, "Job '%1' is already targeted at server '%2'."},
    {14270, 16, 1, "Job '%1' is not currently targeted at server '%2'."},
    {14294, 16, 1, "Supply either %1 or %2 to identify the job."},
    {15001, 16, 1, "Object '%1' does not exist or is not a valid object for this operation."},
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
    {15062, 16, 1, "The guest user cannot be mapped to a login name."},
    {15063, 16, 1, "The login already has an account under a different user name."},
    {15066, 16, 1,
     "A default-name mapping of a remote login from remote server '%1' already exists."},
    {15094, 16, 1, "The %1 '%2' cannot be changed."},
    {15097, 16, 1,
     "The size associated with an extended property cannot be more than 7,500 bytes."},
    {15110, 16, 1, "The proposed new database owner is already a user or aliased in the database."},
    {15123, 16, 1,
     "The configuration option '%1' does not exist, or it may be an advanced option."},
    {15129, 16, 1, "'%1' is not a valid value for configuration option '%2'."},
    {15135, 16, 1,
     "Object is invalid. Extended properties are not permitted on '%1', or the object does not "
     "exist."},
    {15144, 16, 1, "The role has members. It must be empty before it can be dropped."},
    {15150, 16, 1, "Cannot %1 the %2 '%3'."},
    {15151, 16, 1, "Cannot find the user or role '%1'."},
    {15175, 16, 1,
     "The login '%1' is aliased or mapped to a user in one or more database(s). Drop "
     "the user or alias before dropping the login."},
    {15183, 16, 1, "The user owns objects in the database and cannot be dropped."},
    {15190, 16, 1, "There are still remote logins for the server '%1'."},
    {15197, 16, 1, "There is no text for object '%1'."},
    {15211, 16, 1, "Old (current) password incorrect for user. The password was not changed."},
    {15217, 16, 1, "Property cannot be updated or deleted. Property '%1' does not exist for '%2'."},
    {15225, 11, 1,
     "No item by the name of '%1' could be found in the current database '%2', given that "
     "@itemtype "
     "was input as '%3'."},
    {15233, 16, 1, "Property cannot be added. Property '%1' already exists for '%2'."},
    {15241, 16, 1, "Usage: sp_dboption [dbname [,optname [,'true' | 'false']]]"},
    {15247, 16, 1, "User does not have permission to perform this action."},
    {15248, 11, 1,
     "Either the parameter @objname is ambiguous or the claimed @objtype (%1) is wrong."},
    {15249, 11, 1, "Explicit @itemtype '%1' is unrecognized (%2)."},
    {15250, 16, 1,
     "The database name component of the object qualifier must be the name of the current "
     "database."},
    {15298, 0, 1, "New login created."},
    {15335, 11, 1,
     "Error: The @newname value '%1' is already in use as a %2 name and would cause a duplicate "
     "that is not permitted."},
    {15336, 16, 1,
     "Object '%1' cannot be renamed because the object participates in enforced dependencies."},
    {15341, 0, 1, "Granted database access to '%1'."},
    {15342, 0, 1, "User has been dropped from current database."},
    {15387, 11, 1,
     "If the qualified object name specifies a database, that database must be the current "
     "database."},
    {15401, 11, 1, "Windows NT user or group '%1' not found. Check the name again."},
    {15402, 11, 1, "'%1' is not a fixed server role."},
    {15405, 11, 1, "Cannot use the reserved user or role name '%1'."},
    {15407, 11, 1,
     "'%1' is not a valid Windows NT name. Give the complete name: <domain\\username>."},
    {15409, 11, 1, "'%1' is not a role."},
    {15410, 11, 1, "User or role '%1' does not exist in this database."},
    {15412, 11, 1, "'%1' is not a known fixed role."},
    {15414, 16, 1, "Cannot add the role '%1' to itself."},
    {15422, 16, 1, "Application roles can only be activated at the ad hoc level."},
    {15424, 0, 1, "New role added."},
    {15425, 0, 1, "Role dropped."},
    {15433, 16, 1, "Supplied parameter %1 is in use."},
    {15434, 16, 1, "Could not drop login '%1' as the user is currently logged in."},
    {15457, 0, 1,
     "Configuration option '%1' changed from %2 to %3. Run the RECONFIGURE statement to install."},
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
    {15500, 0, 1, "The %1 was renamed to '%2'."},
    {15600, 15, 1, "An invalid parameter or option was specified for procedure '%1'."},
    {16929, 16, 1, "The cursor is READ ONLY."},
    {16931, 16, 1, "There are no rows in the current fetch buffer."},
    {16947, 16, 1, "No rows were updated or deleted."},
    {17750, 16, 1, "Cannot load the DLL %1, or one of the DLLs it references. Reason: %2."},
    {18456, 14, 1, "Login failed for user '%1'.%2"},
    {50001, 16, 1, "The local server does not support %1."},
    {50011, 0, 1, "The local server keeps %1 '%2' as text but does not run it."},
    {50012, 16, 1, "The local server keeps procedure '%1' as text and cannot run it."},
};

// After these the rest of the batch is not run: what could not be resolved, and conversions.
constexpr int kBatchEnding[] = {102,  105,  156,  170,  207,  208, 241, 242, 245,
                                1205, 2714, 3617, 8114, 4902, 911, 942, 924, 916};

}  // namespace

ServerMessage MessageOf(int number, std::initializer_list<std::string_view> parts) {
  const auto* row = std::ranges::lower_bound(kMessages, number, {}, &MessageRow::number);
  if (row == std::end(kMessages) || row->number != number) return MakeMessage(number, parts);
  ServerMessage message;
  message.number = number;
  message.severity = row->severity;
  message.state = row->state;
  for (std::size_t i = 0; i < row->text.size(); ++i) {
    const std::size_t place = row->text[i] == '%' && i + 1 < row->text.size()
                                  ? static_cast<std::size_t>(row->text[i + 1] - '1')
                                  : parts.size();
    if (place < parts.size()) {
      message.text += *(parts.begin() + place);
      ++i;
    } else {
      message.text += row->text[i];
    }
  }
  return message;
}

void Fail(int number, std::initializer_list<std::string_view> parts) {
  throw SqlError(MessageOf(number, parts));
}

bool EndsBatch(int number) {
  return std::ranges::find(kBatchEnding, number) != std::end(kBatchEnding);
}

}  // namespace dbkeeper::server
