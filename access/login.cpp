#include "access/login.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "access/engine.h"
#include "core/attempt.h"
#include "core/globals.h"
#include "core/prompt.h"

namespace velnor {
namespace {

void describe(QWidget& control, const char* name, const QString& tip)
{
    control.setObjectName(name);
    control.setToolTip(tip);
    control.setAccessibleDescription(tip);
}

QString shortName(const QString& path)
{
    return path.mid(path.lastIndexOf('\\') + 1);
}

}  // namespace

Login::Login(Workspace& workspace, QWidget* parent) : QDialog(parent), workspace_(workspace)
{
    setObjectName("Login");
    setWindowTitle("Login to Database File");
    buildControls();
    useFonts();
    globals().LOGIN_OK_FLG = false;
}

void Login::buildControls()
{
    auto* heading = new QLabel(this);
    heading->setText(tr("%1 is protected by a password.").arg(shortName(globals().WORK_FILE)));
    heading->setTextFormat(Qt::PlainText);
    heading->setToolTip(globals().WORK_FILE);
    heading->setWordWrap(true);

    txtUserName = new QLineEdit(this);
    describe(*txtUserName, "txtUserName", "User Name to use for Database clearence");
    txtPassword = new QLineEdit(this);
    describe(*txtPassword, "txtPassword", "Enter Password to Access the Database");
    txtPassword->setEchoMode(QLineEdit::Password);

    auto* form = new QFormLayout;
    form->addRow(tr("&User name:"), txtUserName);
    form->addRow(tr("&Password:"), txtPassword);

    auto* buttons = new QDialogButtonBox(this);
    OKBtn = buttons->addButton(QDialogButtonBox::Ok);
    CancelBtn = buttons->addButton(QDialogButtonBox::Cancel);
    describe(*OKBtn, "OKBtn", "Proceed to Open File using User ID and Password");
    describe(*CancelBtn, "CancelBtn", "Exit Database File Login");
    OKBtn->setDefault(true);
    CancelBtn->setAutoDefault(false);  // Enter on it is still OKBtn
    connect(OKBtn, &QPushButton::clicked, this, edge(this, &Login::OKBtn_Click));
    connect(CancelBtn, &QPushButton::clicked, this, edge(this, &Login::CancelBtn_Click));

    auto* column = new QVBoxLayout(this);
    column->addWidget(heading);
    column->addLayout(form);
    column->addWidget(buttons);
    setMinimumWidth(fontMetrics().averageCharWidth() * 56);
    txtPassword->setFocus();
}

void Login::useFonts()
{
    for (QLineEdit* box : {txtUserName, txtPassword}) {
        QFont font = box->font();
        font.setBold(globals().BOLD_TEXT);
        box->setFont(font);
    }
}

void Login::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        useFonts();
}

void Login::OKBtn_Click()
{
    auto& G = globals();
    if (txtPassword->text().isEmpty())
        return refuse();

    G.LOGIN_OK_FLG = true;
    G.DATABASE_PASSWORD = txtPassword->text();
    const Outcome opened = attempt([&] {
        Database database = workspace_.OpenDatabase(G.WORK_FILE.toStdString(), false, true,
                                                    (";pwd=" + G.DATABASE_PASSWORD).toStdString());
        database.Close();
    });
    if (!opened)
        return refuse();  // LOGIN_OK_FLG stays set, required: the next try or Cancel settles it
    accept();
}

void Login::refuse()
{
    prompt().tell(this, "Invalid Password, try again!", "Login to Database");
    txtPassword->setFocus();
    txtPassword->selectAll();
}

void Login::CancelBtn_Click()
{
    globals().LOGIN_OK_FLG =
        false;  // a failed text stays in DATABASE_PASSWORD: there is no undoing
    QDialog::reject();
}

void Login::reject()
{
    CancelBtn_Click();
}

}  // namespace velnor
