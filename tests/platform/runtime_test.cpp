// Runtime access: typed sends, nil receivers, super sends, capability probes,
// instance-variable reads, and the library's own classes.
#include "platform/runtime.h"

#include <gtest/gtest.h>

#include "platform/classes.h"
#include "platform/foundation.h"
#include "test_classes.h"

namespace kv {
namespace {

using platform::Sel;
using platform::send;
using test::defineClass;
using test::imp;
using test::newInstance;

double half(id, SEL, double d) {
  return d / 2;
}
test::Box box(id, SEL) {
  return {1, 2, 3, 4};
}
const char* baseName(id, SEL) {
  return "base";
}
const char* derivedName(id, SEL) {
  return "derived";
}
double scaled(id, SEL, long by) {
  return 1.5 * static_cast<double>(by);
}
BOOL answersYes(id, SEL, id) {
  return 1;
}

TEST(Runtime, NilReceiversAnswerZero) {
  EXPECT_EQ(send<int>(nullptr, Sel("anything")), 0);
  EXPECT_EQ(send<double>(nullptr, Sel("anything")), 0.0);
  EXPECT_EQ(send<id>(nullptr, Sel("anything")), nullptr);
  test::Box b = send<test::Box>(nullptr, Sel("anything"));
  EXPECT_EQ(b.x + b.y + b.w + b.h, 0.0);
  send<void>(nullptr, Sel("anything"));  // and nothing happens
}

TEST(Runtime, TypedSendsCarryFloatsAndStructs) {
  Class cls = defineClass("Typed", nullptr,
                          {{"half:", imp(half), "d@:d"}, {"box", imp(box), "{Box=dddd}@:"}});
  id obj = newInstance(cls);
  EXPECT_EQ(send<double>(obj, Sel("half:"), 5.0), 2.5);
  EXPECT_EQ(send<test::Box>(obj, Sel("box")).h, 4.0);
}

TEST(Runtime, SuperSendStartsAtTheGivenClass) {
  Class base = defineClass("NameBase", nullptr, {{"name", imp(baseName), "r*@:"}});
  Class derived = defineClass("NameDerived", "NameBase", {{"name", imp(derivedName), "r*@:"}});
  id obj = newInstance(derived);
  EXPECT_STREQ(send<const char*>(obj, Sel("name")), "derived");
  EXPECT_STREQ(platform::sendSuper<const char*>(base, obj, Sel("name")), "base");
  EXPECT_EQ(platform::sendSuper<const char*>(nullptr, obj, Sel("name")), nullptr);
}

TEST(Runtime, ProbesAndClassLookup) {
  Class base = defineClass("ProbeBase", nullptr, {{"name", imp(baseName), "r*@:"}});
  Class derived = defineClass("ProbeDerived", "ProbeBase", {});
  id obj = newInstance(derived);
  EXPECT_EQ(platform::classNamed("ProbeDerived"), derived);
  EXPECT_EQ(platform::classNamed("NoSuchProbeClass"), nullptr);
  EXPECT_EQ(platform::superclassOf(derived), base);
  EXPECT_NE(platform::metaclassOf(base), base);
  EXPECT_TRUE(platform::respondsTo(obj, Sel("name")));
  EXPECT_FALSE(platform::respondsTo(obj, Sel("noSuchSelector")));
  EXPECT_FALSE(platform::respondsTo(nullptr, Sel("name")));
  EXPECT_TRUE(platform::isKindOf(obj, base));
  EXPECT_TRUE(platform::isKindOf(obj, "NSObject"));
  EXPECT_FALSE(platform::isKindOf(obj, "NSString"));
  EXPECT_FALSE(platform::isKindOf(obj, "NoSuchProbeClass"));
  EXPECT_STREQ(platform::classNameOf(obj), "ProbeDerived");
  EXPECT_STREQ(platform::classNameOf(nullptr), "nil");
}

TEST(Runtime, InstanceVariablesAreReadByName) {
  Class cls = objc_allocateClassPair(platform::classNamed("NSObject"), "WithIvars", 0);
  ASSERT_TRUE(class_addIvar(cls, "_count", sizeof(long), 3, "l"));
  ASSERT_TRUE(class_addIvar(cls, "_currentNetwork", sizeof(id), 3, "@"));
  objc_registerClassPair(cls);
  id obj = newInstance(cls);
  *static_cast<long*>(platform::ivarAddress(obj, "_count")) = 42;
  *static_cast<id*>(platform::ivarAddress(obj, "_currentNetwork")) = obj;
  EXPECT_EQ(platform::ivar<long>(obj, "_count"), 42);
  EXPECT_EQ(platform::ivar<id>(obj, "_currentNetwork"), obj);
  EXPECT_EQ(platform::ivar<long>(obj, "_missing"), std::nullopt);
  EXPECT_EQ(platform::ivar<long>(nullptr, "_count"), std::nullopt);
}

TEST(Runtime, LibraryClassesTakeTheirEncodingsFromTheirFunctions) {
  Class cls = platform::defineClass(
      "FromFunctions", "NSObject",
      {platform::method("scaled:", scaled), platform::method("answersYes:", answersYes, true)});
  ASSERT_NE(cls, nullptr);
  Method scaledMethod = class_getInstanceMethod(cls, Sel("scaled:"));
  ASSERT_NE(scaledMethod, nullptr);
  EXPECT_TRUE(platform::encodingsCompatible(method_getTypeEncoding(scaledMethod), "d@:q"));
  Method yesMethod = class_getClassMethod(cls, Sel("answersYes:"));
  ASSERT_NE(yesMethod, nullptr);
  EXPECT_TRUE(platform::encodingsCompatible(method_getTypeEncoding(yesMethod), "c@:@"));
  EXPECT_EQ(class_getInstanceMethod(cls, Sel("answersYes:")), nullptr) << "a class method only";

  id obj = newInstance(cls);
  EXPECT_EQ(send<double>(obj, Sel("scaled:"), 2L), 3.0);
  EXPECT_EQ(platform::defineClass("FromFunctions", "NSObject", {}), cls)
      << "an existing class stays";
  EXPECT_EQ(platform::defineClass("Orphaned", "NoSuchSuperclass", {}), nullptr);
  send<void>(obj, Sel("release"));
}

}  // namespace
}  // namespace kv
