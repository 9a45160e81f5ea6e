#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/members/Enumeration.h"
#include "qm_ordering/foundation/members/Late.h"
#include "qm_ordering/platform/text/Names.h"
#include "qm_ordering/platform/value/ClassInfo.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

// What a class offers by name, and the calls behind it. Read-only once it is made, so all threads share it.
class MemberTable {
 public:
  using Arguments = std::span<const Variant>;
  using Call = std::function<Variant(const std::shared_ptr<Object>&, Arguments)>;

  explicit MemberTable(const char* zvClassName) {
    m_oInfo.Name = zvClassName;
    m_oInfo.m_oTable = this;
  }
  MemberTable(const MemberTable&) = delete;
  MemberTable& operator=(const MemberTable&) = delete;

  const ClassInfo& Info() const { return m_oInfo; }
  // The table of the object's class. Raises kUnknownMember for an object that has none.
  static const MemberTable& Of(const Object& object);

  // Each finds the member by its name, in any letter case, or the default member for an empty name. Raise
  // kUnknownMember, kReadOnlyProperty, kWrongArgumentCount, kArgumentNotOptional, a conversion's failure, and
  // what the member raises.
  Variant Get(const std::shared_ptr<Object>& ovObject, std::string_view zvMember,
              Arguments vvArguments) const;
  void Put(const std::shared_ptr<Object>& ovObject, std::string_view zvMember, const Variant& vvValue) const;
  Variant Invoke(const std::shared_ptr<Object>& ovObject, std::string_view zvMember,
                 Arguments vvArguments) const;
  // Raises kUnknownMember for an object that is no collection.
  std::shared_ptr<Enumeration> Enumerate(const std::shared_ptr<Object>& ovObject) const;

 protected:
  using Parameters = std::vector<ParameterInfo>;

  void Add(MemberInfo member, Call call);
  void SetDefault(const char* zvMember);

  ClassInfo m_oInfo;
  Call m_fEnumerate;

 private:
  struct Bound {
    Call Body;
    std::size_t Position = 0;  // among the members of the class
    std::size_t Parameters = 0;
  };
  struct Named {
    Bound Get;
    Bound Put;
    Bound Method;
    bool Answers = false;
  };

  // Calls it with its arguments in full.
  Variant Use(const Bound& member, const std::shared_ptr<Object>& ovObject, Arguments vvArguments) const;
  const Named& Find(std::string_view zvMember) const;
  [[noreturn]] void RaiseUnknown(std::string_view zvMember, const char* zvWhy) const;

  std::unordered_map<std::string_view, Named, text::HashName, text::EqualName> m_oMembers;
  const Named* m_oDefault = nullptr;
};

// What a method's parameter is called, and its value where it may be left out.
struct ParameterName {
  ParameterName(const char* zvName) : Name(zvName) {}  // NOLINT: reads as the name in a table
  ParameterName(const char* zvName, Variant vvDefault)
      : Name(zvName), IsOptional(true), Default(std::move(vvDefault)) {}

  const char* Name;
  bool IsOptional = false;
  Variant Default;
};

// The table of the class C. Each member is given as its name and a pointer to it (QM_MEMBER makes both of one
// word), so that the compiler knows its types, and that it is there.
template <typename C>
class ClassTable : public MemberTable {
 public:
  // fill adds the members. Raises 7 where memory ends, which leaves the table to be made at the next try.
  template <typename Fill>
  ClassTable(const char* zvClassName, Fill fill) : MemberTable(zvClassName) {
    OrOutOfMemory([&] { fill(*this); });
  }

  template <typename R>
  ClassTable& ReadOnly(const char* zvName, R (C::*get)() const) {
    Add({zvName, MemberKind::PropertyGet, Late<R>::Type()},
        [get](const std::shared_ptr<Object>& ovObject, Arguments) {
          return Late<R>::ToVariant((Self(ovObject).*get)());
        });
    return *this;
  }
  // A field of a record.
  template <typename R, typename Record>
  ClassTable& ReadOnly(const char* zvName, R Record::*field) {
    Add({zvName, MemberKind::PropertyGet, Late<R>::Type()},
        [field](const std::shared_ptr<Object>& ovObject, Arguments) {
          return Late<R>::ToVariant(Self(ovObject).Value().*field);
        });
    return *this;
  }

  template <typename R, typename V>
  ClassTable& ReadWrite(const char* zvName, R (C::*get)() const, void (C::*put)(V)) {
    using Given = Late<std::remove_cvref_t<V>>;
    ReadOnly(zvName, get);
    const std::string zParameter = std::string(Given::kPrefix) + "v" + zvName;
    Add({zvName, Given::kKind, "", {{zParameter, Given::Type(), false, {}}}},
        [put, zvName](const std::shared_ptr<Object>& ovObject, Arguments vvArguments) {
          (Self(ovObject).*
           put)(Converted(ovObject, zvName, 1, [&] { return Given::FromVariant(vvArguments[0]); }));
          return Variant();
        });
    return *this;
  }

  template <typename R, typename... A, typename... P>
  ClassTable& Method(const char* zvName, R (C::*method)(A...), P... parameters) {
    static_assert(sizeof...(P) == sizeof...(A), "each parameter has a name");
    return AddMethod<R, A...>(zvName, method, {ParameterName(std::move(parameters))...});
  }
  template <typename R, typename... A, typename... P>
  ClassTable& Method(const char* zvName, R (C::*method)(A...) const, P... parameters) {
    static_assert(sizeof...(P) == sizeof...(A), "each parameter has a name");
    return AddMethod<R, A...>(zvName, method, {ParameterName(std::move(parameters))...});
  }

  // What makes the class a collection.
  template <typename Members>
  ClassTable& Enumerates(const char* zvName, Members (C::*newEnum)() const) {
    using Member = std::remove_cvref_t<decltype(*std::declval<Members>().begin())>;
    m_oInfo.ElementType = Late<Member>::Type();
    m_fEnumerate = [newEnum](const std::shared_ptr<Object>& ovObject, Arguments) {
      return Variant(
          std::make_shared<EnumerationOf<C, Members>>(std::static_pointer_cast<C>(ovObject), newEnum));
    };
    Add({zvName, MemberKind::Method, Enumeration::kClassName}, m_fEnumerate);
    return *this;
  }

  ClassTable& Default(const char* zvName) {
    SetDefault(zvName);
    return *this;
  }

 private:
  static C& Self(const std::shared_ptr<Object>& ovObject) { return static_cast<C&>(*ovObject); }

  template <typename R, typename... A, typename M>
  ClassTable& AddMethod(const char* zvName, M method, std::vector<ParameterName> names) {
    return AddMethod<R, A...>(zvName, method, std::move(names), std::index_sequence_for<A...>());
  }
  template <typename R, typename... A, typename M, std::size_t... I>
  ClassTable& AddMethod(const char* zvName, M method, std::vector<ParameterName> names,
                        std::index_sequence<I...>) {
    std::vector<ParameterInfo> parameters{
        {names[I].Name, Late<std::remove_cvref_t<A>>::Type(), names[I].IsOptional, names[I].Default}...};
    Add({zvName, MemberKind::Method, Late<R>::Type(), std::move(parameters)},
        [method, zvName](const std::shared_ptr<Object>& ovObject, [[maybe_unused]] Arguments vvArguments) {
          static_cast<void>(zvName);  // of a method without parameters nothing is converted
          // In braces, so that the arguments are converted from the first to the last.
          std::tuple<std::remove_cvref_t<A>...> arguments{Converted(ovObject, zvName, I + 1, [&] {
            return Late<std::remove_cvref_t<A>>::FromVariant(vvArguments[I]);
          })...};
          if constexpr (std::is_void_v<R>) {
            (Self(ovObject).*method)(std::get<I>(arguments)...);
            return Variant();
          } else {
            return Late<R>::ToVariant((Self(ovObject).*method)(std::get<I>(arguments)...));
          }
        });
    return *this;
  }

  // What a conversion answers; its failure says of which argument.
  template <typename Conversion>
  static auto Converted(const std::shared_ptr<Object>& ovObject, const char* zvMember, std::size_t lvPosition,
                        Conversion conversion) {
    try {
      return conversion();
    } catch (const Failure& failure) {
      throw Failure(failure.Number(), std::string(ovObject->ClassName()) + "." + zvMember + ", argument " +
                                          std::to_string(lvPosition) + ": " + failure.Description());
    }
  }
};

// What the class C offers, made at the first call. It is never destroyed: other threads, and functions that
// run at the program's end, may still use it.
template <typename C, typename Fill>
const ClassInfo& MembersOnce(const char* zvClassName, Fill fill) {
  static const auto& table = *new ClassTable<C>(zvClassName, fill);
  return table.Info();
}

// A member's name and the pointer to it, in a function of its class.
#define QM_MEMBER(member) #member, &Class::member
// The same for a property that can be read and written.
#define QM_PROPERTY(member) #member, &Class::member, &Class::member

}  // namespace qm_ordering
