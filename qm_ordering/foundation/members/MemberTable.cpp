#include "qm_ordering/foundation/members/MemberTable.h"

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

namespace {

// The arguments in full: those that were left out are what they are by default.
class Completed {
 public:
  Completed(const ClassInfo& info, const MemberInfo& member, MemberTable::Arguments vvArguments)
      : m_vArguments(vvArguments) {
    const auto& parameters = member.Parameters;
    if (vvArguments.size() > parameters.size()) {
      throw Failure(failure::kWrongArgumentCount, std::string(info.Name) + "." + member.Name + " takes " +
                                                      std::to_string(parameters.size()) + " arguments, not " +
                                                      std::to_string(vvArguments.size()) + ".");
    }
    bool bComplete = true;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
      if (i < vvArguments.size() && !vvArguments[i].IsMissing()) {
        continue;
      }
      if (!parameters[i].IsOptional) {
        throw Failure(failure::kArgumentNotOptional, std::string(info.Name) + "." + member.Name +
                                                         " needs its argument " + std::to_string(i + 1) +
                                                         ", " + parameters[i].Name + ".");
      }
      bComplete = false;
    }
    if (bComplete) {
      return;
    }
    m_vCompleted.reserve(parameters.size());
    for (std::size_t i = 0; i < parameters.size(); ++i) {
      const bool bGiven = i < vvArguments.size() && !vvArguments[i].IsMissing();
      m_vCompleted.push_back(bGiven ? vvArguments[i] : parameters[i].Default);
    }
    m_vArguments = m_vCompleted;
  }

  operator MemberTable::Arguments() const { return m_vArguments; }

 private:
  std::vector<Variant> m_vCompleted;
  MemberTable::Arguments m_vArguments;
};

}  // namespace

const MemberTable& MemberTable::Of(const Object& object) {
  const MemberTable* pTable = object.Members().m_oTable;
  if (pTable == nullptr) {
    throw Failure(failure::kUnknownMember,
                  std::string("The class ") + object.ClassName() + " has no members to be used by name.");
  }
  return *pTable;
}

void MemberTable::Add(MemberInfo member, Call call) {
  Named& named = m_oMembers[member.Name];
  Bound& slot = member.Kind == MemberKind::Method        ? named.Method
                : member.Kind == MemberKind::PropertyGet ? named.Get
                                                         : named.Put;
  named.Answers = named.Answers || *member.Type != '\0';
  slot = {std::move(call), m_oInfo.Members.size(), member.Parameters.size()};
  m_oInfo.Members.push_back(std::move(member));
}

Variant MemberTable::Use(const Bound& member, const std::shared_ptr<Object>& ovObject,
                         Arguments vvArguments) const {
  if (member.Parameters == 0 && vvArguments.empty()) {
    return member.Body(ovObject, vvArguments);
  }
  return member.Body(ovObject, Completed(m_oInfo, m_oInfo.Members[member.Position], vvArguments));
}

void MemberTable::SetDefault(const char* zvMember) {
  m_oDefault = &m_oMembers.at(zvMember);
  for (MemberInfo& member : m_oInfo.Members) {
    member.IsDefault = member.IsDefault || text::SameName(member.Name, zvMember);
  }
}

void MemberTable::RaiseUnknown(std::string_view zvMember, const char* zvWhy) const {
  throw Failure(failure::kUnknownMember,
                std::string("The class ") + m_oInfo.Name + zvWhy + std::string(zvMember) + "\".");
}

const MemberTable::Named& MemberTable::Find(std::string_view zvMember) const {
  if (zvMember.empty() && m_oDefault != nullptr) {
    return *m_oDefault;
  }
  const auto found = m_oMembers.find(zvMember);
  if (found == m_oMembers.end()) {
    RaiseUnknown(zvMember, " has no member \"");
  }
  return found->second;
}

Variant MemberTable::Get(const std::shared_ptr<Object>& ovObject, std::string_view zvMember,
                         Arguments vvArguments) const {
  const Named& named = Find(zvMember);
  if (named.Get.Body) {
    return Use(named.Get, ovObject, vvArguments);
  }
  if (!named.Answers) {
    RaiseUnknown(zvMember, " has no property, but a method that answers nothing, of the name \"");
  }
  return Use(named.Method, ovObject, vvArguments);
}

void MemberTable::Put(const std::shared_ptr<Object>& ovObject, std::string_view zvMember,
                      const Variant& vvValue) const {
  const Named& named = Find(zvMember);
  if (!named.Put.Body) {
    if (named.Get.Body) {
      throw Failure(failure::kReadOnlyProperty, std::string("The property ") + m_oInfo.Name + "." +
                                                    std::string(zvMember) + " can only be read.");
    }
    RaiseUnknown(zvMember, " has no property, but a method, of the name \"");
  }
  Use(named.Put, ovObject, Arguments(&vvValue, 1));
}

Variant MemberTable::Invoke(const std::shared_ptr<Object>& ovObject, std::string_view zvMember,
                            Arguments vvArguments) const {
  const Named& named = Find(zvMember);
  return Use(named.Method.Body ? named.Method : named.Get, ovObject, vvArguments);
}

std::shared_ptr<Enumeration> MemberTable::Enumerate(const std::shared_ptr<Object>& ovObject) const {
  if (!m_fEnumerate) {
    throw Failure(failure::kUnknownMember,
                  std::string("The class ") + m_oInfo.Name + " is no collection and cannot be enumerated.");
  }
  return std::static_pointer_cast<Enumeration>(m_fEnumerate(ovObject, {}).ToObject());
}

}  // namespace qm_ordering
