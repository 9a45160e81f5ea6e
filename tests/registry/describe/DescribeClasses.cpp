#include <cstdio>
#include <string>

#include "qm_ordering/qm_ordering.h"

// Prints what the classes offer by name, in the form that check-members makes of the headers.

namespace {

using namespace qm_ordering;

const char* NameOf(MemberKind kind) {
  switch (kind) {
    case MemberKind::PropertyGet:
      return "get";
    case MemberKind::PropertyLet:
      return "let";
    case MemberKind::PropertySet:
      return "set";
    case MemberKind::Method:
      return "call";
  }
  return "?";
}

std::string TextOf(const ParameterInfo& parameter) {
  std::string zText = parameter.Name + ": " + parameter.Type;
  if (parameter.IsOptional) {
    zText += " = " + (parameter.Default.IsMissing() ? "Missing" : parameter.Default.ToString());
  } else if (!parameter.Default.IsEmpty()) {
    zText += " (needed, but with a default)";
  }
  return zText;
}

std::string TextOf(const MemberInfo& member) {
  std::string zText = std::string(NameOf(member.Kind)) + " " + member.Name + "(";
  const char* zSeparator = "";
  for (const ParameterInfo& parameter : member.Parameters) {
    zText += zSeparator + TextOf(parameter);
    zSeparator = ", ";
  }
  zText += ")";
  if (*member.Type != '\0') {
    zText += std::string(" -> ") + member.Type;
  }
  return zText + (member.IsDefault ? " default" : "");
}

void Print(const char* zvSort, const std::string& zvClassName) {
  const ClassInfo& info = DescribeClass(zvClassName);
  std::printf("%s %s%s%s\n", zvSort, info.Name, *info.ElementType == '\0' ? "" : " of ", info.ElementType);
  for (const MemberInfo& member : info.Members) {
    std::printf("%s: %s\n", info.Name, TextOf(member).c_str());
  }
}

}  // namespace

int main() {
  for (const std::string& zName : ClassNames()) {
    Print("class", zName);
  }
  for (const std::string& zName : AnsweredClassNames()) {
    Print("answered", zName);
  }
}
