#include "host/Document.h"

#include "host/Text.h"
#include "host/WholeFile.h"

namespace host {

void GiveDocument(Context& context, const std::string& zvDocument, const std::string& zvFile) {
  const std::string zContent = zvDocument + "\n";
  if (zvFile.empty()) {
    context.Out.Text(zContent);
    context.Out.Data({{"xml", zvDocument}});
    return;
  }
  WriteWholeFile(zvFile, zContent);
  context.Out.Text("Wrote " + Shown(zvFile) + ", " + Counted(zContent.size(), "byte") + "\n");
  context.Out.Data({{"file", zvFile}, {"bytes", zContent.size()}});
}

}  // namespace host
