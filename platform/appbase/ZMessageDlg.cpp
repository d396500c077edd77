#include "ZMessageDlg.h"

#include "ZSoftKey.h"
#include "ZWrappedText.h"
#include "ulo/texts.h"

ZMessageDlg::ZMessageDlg(const QString& title, const QString& text, int type, QWidget* parent)
    : ZPopup(title, parent), text_(text) {
  setContent(new ZWrappedText(text));
  if (type == question)
    setKeys(ulo::text("TXT_RID_SOFTKEY_YES", "Yes"), ulo::text("TXT_RID_SOFTKEY_NO", "No"));
  else
    setKeys(ulo::text("TXT_RID_SOFTKEY_OK", "OK"), QString());
}
