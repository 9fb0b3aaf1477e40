// Makes the windows of the forms; a form adds its overload here and its line in QtFace.cpp.
#pragma once

#include <memory>

class QWidget;

namespace dbkeeper {

class ActionGuard;
class TFormChooseTable;
class TFormExecSQL;
class TFormLogin;
class TFormMain;
class TFormRestore;
class TFormRole;
class TForm_BackupMedia;
class TForm_Database_Property;
class TForm_Login_Property;
class TForm_Privileges;
class TForm_User;
class TForm_Table;
class TForm_Table_TestData;

namespace qt {

class QtWindows;

// Form and guard must outlive the window; `owner` is the main window, or null.
std::unique_ptr<QWidget> MakeWindow(TFormChooseTable& form, const ActionGuard& guard,
                                    QWidget* owner);
std::unique_ptr<QWidget> MakeWindow(TFormExecSQL& form, const ActionGuard& guard, QWidget* owner);
std::unique_ptr<QWidget> MakeWindow(TFormLogin& form, const ActionGuard& guard, QWidget* owner);
std::unique_ptr<QWidget> MakeWindow(TFormRestore& form, const ActionGuard& guard, QWidget* owner);
std::unique_ptr<QWidget> MakeWindow(TForm_BackupMedia& form, const ActionGuard& guard,
                                    QWidget* owner);
std::unique_ptr<QWidget> MakeWindow(TForm_Database_Property& form, const ActionGuard& guard,
                                    QWidget* owner);
std::unique_ptr<QWidget> MakeWindow(TFormRole& form, const ActionGuard& guard, QWidget* owner);
std::unique_ptr<QWidget> MakeWindow(TForm_Login_Property& form, const ActionGuard& guard,
                                    QWidget* owner);
std::unique_ptr<QWidget> MakeWindow(TForm_Privileges& form, const ActionGuard& guard,
                                    QWidget* owner);
std::unique_ptr<QWidget> MakeWindow(TForm_User& form, const ActionGuard& guard, QWidget* owner);
std::unique_ptr<QWidget> MakeWindow(TForm_Table& form, const ActionGuard& guard, QWidget* owner);
std::unique_ptr<QWidget> MakeWindow(TForm_Table_TestData& form, const ActionGuard& guard,
                                    QWidget* owner);
// The main window, with what the program has added to the system menu of `windows`.
std::unique_ptr<QWidget> MakeMainWindow(TFormMain& form, const ActionGuard& guard,
                                        const QtWindows& windows);

}  // namespace qt
}  // namespace dbkeeper
