# Where several sources are compiled as one (CMAKE_UNITY_BUILD), which takes a quarter of the time,
# these stand alone: names of their own meet those of a neighbour.
set_source_files_properties(
  app/session/CellText.cpp
  catalog/DatabaseList.cpp
  catalog/DatabaseProperties.cpp
  catalog/ObjectLists.cpp
  catalog/PermissionScript.cpp
  catalog/ServerLists.cpp
  database/Unit_Restore.cpp
  document/xls/StyleTable.cpp
  platform/qt/QtProgress.cpp
  platform/qt/binders/TextBinders.cpp
  security/Unit_Privileges.cpp
  security/Unit_Role.cpp
  server/agent/job_run.cpp
  server/instance/sample_instance.cpp
  server/procedures/backup_history_procedures.cpp
  server/procedures/database_procedures.cpp
  server/procedures/job_procedures.cpp
  server/procedures/job_schedule_procedures.cpp
  server/procedures/job_step_procedures.cpp
  server/procedures/login_procedures.cpp
  server/procedures/metadata_procedures.cpp
  server/procedures/object_procedures.cpp
  server/procedures/property_procedures.cpp
  server/procedures/user_procedures.cpp
  server/sql/function_table.cpp
  server/sql/number_functions.cpp
  server/types/conversion.cpp
  PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)

# Each window has measures of its own, named alike, and each chapter of the tour its places.
file(GLOB windows RELATIVE ${CMAKE_SOURCE_DIR} CONFIGURE_DEPENDS
  platform/qt/forms/*.cpp platform/qt/tour/*.cpp)
set_source_files_properties(${windows} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
