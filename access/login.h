// access/login.h - the question for the password of a protected Access file.
#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace velnor {

class Workspace;

/// In: WORK_FILE. Out: LOGIN_OK_FLG, DATABASE_PASSWORD. It tests the password itself, by opening
/// the file. Run it through prompt().run(). Enter anywhere acts as OKBtn.
class Login : public QDialog {
    Q_OBJECT
public:
    explicit Login(Workspace& workspace, QWidget* parent = nullptr);

    // Controls.
    QLineEdit* txtUserName;  // shown, never read: the engine knows no users
    QLineEdit* txtPassword;
    QPushButton* OKBtn;
    QPushButton* CancelBtn;

    // What the controls do.
    void OKBtn_Click();
    void CancelBtn_Click();

    void reject() override;  // Escape and the window's close button cancel

protected:
    void changeEvent(QEvent* event) override;

private:
    void buildControls();
    void refuse();
    void useFonts();

    Workspace& workspace_;
};

}  // namespace velnor
