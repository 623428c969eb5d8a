// assist/about1.h - the about box.
#pragma once

#include <array>
#include <functional>

#include <QDialog>

class QLabel;
class QPushButton;

namespace velnor {

/// What a click with the right button on a text of the about box opens.
inline constexpr const char* kMakersPage = "https://velnor.example/";

/// ABOUT_OPEN is set while it is loaded.
class About1 : public QDialog {
    Q_OBJECT
public:
    explicit About1(QWidget* parent = nullptr);
    ~About1() override;

    // Controls.
    QLabel* picIcon;
    std::array<QLabel*, 3> Label1;
    QPushButton* SysBtn;
    QPushButton* OKBtn;

    /// Starts the desktop's program that tells about the machine; false when there is none.
    std::function<bool()> startSystemInformation = [] { return false; };

    void SysBtn_Click();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace velnor
