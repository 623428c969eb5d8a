// assist/quik_tip1.h - the tip of the day: a tip of TIPHELP.TXT, one of its lines, and the next
// ones on request.
#pragma once

#include <QDialog>
#include <QStringList>

class QCheckBox;
class QLabel;
class QPushButton;

namespace velnor {

/// Shown beside the other windows, not above them. QUIKTIP_OPEN is set while it is loaded.
class QuikTip1 : public QDialog {
    Q_OBJECT
public:
    explicit QuikTip1(QWidget* parent = nullptr);
    ~QuikTip1() override;

    // Controls.
    QLabel* Label1;  // "Did you know..."
    QLabel* lblTipText;
    QCheckBox* chkLoadTipsAtStartup;  // checked: no tips at start
    QPushButton* NextTipBtn;
    QPushButton* OKBtn;

    void NextTipBtn_Click();
    /// Takes the check box over into SHOW_TIPS, and goes. Closing in another way takes nothing
    /// over.
    void OKBtn_Click();
    /// Each line into the collection, and one of them shown: another one each day. False when there
    /// are none; a missing file is told.
    bool LoadTips(const QString& file);

private:
    void buildControls();
    void showTip();
    QStringList tips_;
    qsizetype current_ = 0;
};

}  // namespace velnor
