#include "qm_ordering/registry/CClasses.h"

#include <algorithm>
#include <deque>
#include <vector>

#include "qm_ordering/registry/CValues.h"
#include "qm_ordering/registry/CreateObject.h"

namespace qm_ordering::c_interface {

namespace {

struct Described {
  explicit Described(const ClassInfo& info, bool bvCreatable) {
    for (const MemberInfo& member : info.Members) {
      std::vector<qm_ordering_parameter>& parameters = Parameters.emplace_back();
      for (const ParameterInfo& parameter : member.Parameters) {
        parameters.push_back({parameter.Name.c_str(), parameter.Type, parameter.IsOptional ? 1 : 0,
                              ToC(Variant(parameter.Default))});
      }
      Members.push_back({member.Name, static_cast<int32_t>(member.Kind), member.Type,
                         member.IsDefault ? 1 : 0, parameters.size(), parameters.data()});
    }
    Class = {info.Name, bvCreatable ? 1 : 0, info.ElementType, Members.size(), Members.data()};
  }
  Described(const Described&) = delete;
  Described& operator=(const Described&) = delete;

  std::deque<std::vector<qm_ordering_parameter>> Parameters;
  std::vector<qm_ordering_member> Members;
  qm_ordering_class Class;
};

struct All {
  All() {
    for (const bool bCreatable : {true, false}) {
      for (const std::string& zName : bCreatable ? ClassNames() : AnsweredClassNames()) {
        Classes.push_back(&Descriptions.emplace_back(DescribeClass(zName), bCreatable).Class);
      }
    }
  }
  std::deque<Described> Descriptions;
  std::vector<const qm_ordering_class*> Classes;
};

}  // namespace

std::span<const qm_ordering_class* const> Classes() {
  // Never destroyed: hosts may read it on other threads and at their end.
  static const All& all = *new All;
  return all.Classes;
}

const qm_ordering_class& Describe(const std::string& zvClassName) {
  const char* zName = DescribeClass(zvClassName).Name;
  const auto all = Classes();
  return **std::ranges::find(all, zName, &qm_ordering_class::name);
}

}  // namespace qm_ordering::c_interface
