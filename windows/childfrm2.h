// windows/childfrm2.h - texts, plain and for reading only. Formatted documents, pages, find and
// edit come with the document viewer; the window says so where it matters.
#pragma once

#include "windows/document_child.h"

class QLabel;
class QPlainTextEdit;

namespace velnor {

class FindBar;

class ChildFrm2 : public DocumentChild {
    Q_OBJECT
public:
    explicit ChildFrm2(MDIForm1& shell);

    QPlainTextEdit* Text1;  // the text
    QLabel* notice;         // what is not shown of it, and why
    FindBar* findBar;

    void Form_Load() override;
    void Form_Activate() override;
    void enableTools() override;
    void mnuEditCopy_Click() override;
    void applyOptions() override;
    void mnuFindText_Click() override;
    void mnuFindNextText_Click() override;

protected:
    void Form_Unload() override;

private:
    void loadText();
    QString folder_, fileName_;
};

/// 8-bit text of the system, or UTF-8 where it reads as such.
QString decodeText(const std::string& bytes);

}  // namespace velnor
