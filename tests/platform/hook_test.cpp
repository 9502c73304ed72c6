// The interception mechanism on the real runtime: own and inherited methods,
// class methods, missing classes and selectors, additions, signatures, and
// replacements passing their arguments on unchanged.
#include "platform/hook.h"

#include <gtest/gtest.h>

#include "platform/foundation.h"
#include "test_classes.h"

namespace kv {
namespace {

using platform::Hook;
using platform::InstallStatus;
using platform::Row;
using platform::Sel;
using platform::send;
using platform::sendClass;
using test::defineClass;
using test::imp;
using test::newInstance;

const Sel kValue("value");

int baseValue(id, SEL) {
  return 1;
}
int baseValueChanged(id, SEL) {
  return 2;
}
int derivedOwnValue(id, SEL) {
  return 10;
}

// Replacements: each adds its own mark to what the platform answers.
int plus100(id self, SEL cmd) {
  return Hook<&plus100>::original(self, cmd) + 100;
}
int plus1000(id self, SEL cmd) {
  return Hook<&plus1000>::original(self, cmd) + 1000;
}

TEST(Hook, OwnMethodIsExchangedAndSavedIsThePreviousImplementation) {
  Class cls = defineClass("OwnValue", nullptr, {{"value", imp(baseValue), "i@:"}});
  const Row row = platform::replaced<&plus100>("OwnValue", "-value");
  EXPECT_EQ(platform::installRow(row), InstallStatus::kInstalled);
  EXPECT_EQ(Hook<&plus100>::slots.saved, imp(baseValue));
  EXPECT_EQ(Hook<&plus100>::slots.superclass, platform::classNamed("NSObject"));
  id obj = newInstance(cls);
  EXPECT_EQ(send<int>(obj, kValue), 101);
}

TEST(Hook, InheritedMethodIsOverriddenInTheSubclassAndFollowsTheSuperclass) {
  Class base = defineClass("InhBase", nullptr, {{"value", imp(baseValue), "i@:"}});
  Class derived = defineClass("InhDerived", "InhBase", {});
  EXPECT_EQ(platform::installRow(platform::replaced<&plus100>("InhDerived", "-value")),
            InstallStatus::kInstalledInherited);
  EXPECT_EQ(Hook<&plus100>::slots.saved, Hook<&plus100>::info().superStub);
  id b = newInstance(base);
  id d = newInstance(derived);
  EXPECT_EQ(send<int>(b, kValue), 1) << "the superclass keeps its own method";
  EXPECT_EQ(send<int>(d, kValue), 101);

  // A later change of the superclass's method is honoured through the stub.
  method_setImplementation(class_getInstanceMethod(base, kValue), imp(baseValueChanged));
  EXPECT_EQ(send<int>(d, kValue), 102);
}

id returnSelf(id self, SEL) {
  return self;
}
id selfThroughHook(id self, SEL cmd) {
  return Hook<&selfThroughHook>::original(self, cmd);
}

TEST(Hook, SuperStubSendsToTheSameReceiver) {
  defineClass("RecvBase", nullptr, {{"me", imp(returnSelf), "@@:"}});
  Class derived = defineClass("RecvDerived", "RecvBase", {});
  ASSERT_EQ(platform::installRow(platform::replaced<&selfThroughHook>("RecvDerived", "-me")),
            InstallStatus::kInstalledInherited);
  id d = newInstance(derived);
  EXPECT_EQ(send<id>(d, Sel("me")), d);
}

int classMake(id, SEL, int n) {
  return n * 2;
}
int classMakeHook(id self, SEL cmd, int n) {
  return Hook<&classMakeHook>::original(self, cmd, n) + 1;
}
int classMakeInheritedHook(id self, SEL cmd, int n) {
  return Hook<&classMakeInheritedHook>::original(self, cmd, n) + 5;
}

TEST(Hook, ClassMethodsAreInterceptedOnTheMetaclass) {
  Class cls = defineClass("Maker", nullptr, {}, {{"make:", imp(classMake), "i@:i"}});
  Class sub = defineClass("SubMaker", "Maker", {});
  EXPECT_EQ(platform::installRow(platform::replaced<&classMakeHook>("Maker", "+make:")),
            InstallStatus::kInstalled);
  EXPECT_EQ(platform::installRow(platform::replaced<&classMakeInheritedHook>("SubMaker", "+make:")),
            InstallStatus::kInstalledInherited);
  EXPECT_EQ(Hook<&classMakeInheritedHook>::slots.superclass, platform::metaclassOf(cls));
  EXPECT_EQ(sendClass<int>(cls, Sel("make:"), 4), 9);
  EXPECT_EQ(sendClass<int>(sub, Sel("make:"), 4), 14)
      << "sub's hook, then Maker's hook, then Maker's";
  // Instance methods of the same name are untouched: there are none.
  EXPECT_FALSE(class_respondsToSelector(cls, Sel("make:")));
}

int neverCalled(id, SEL) {
  ADD_FAILURE() << "a skipped row's replacement ran";
  return -1;
}

TEST(Hook, MissingClassAndMissingSelectorAreSkippedSilently) {
  Class cls = defineClass("Present", nullptr, {{"value", imp(baseValue), "i@:"}});
  const Row rows[] = {
      platform::replaced<&neverCalled>("NoSuchClassAnywhere", "-value"),
      platform::replaced<&neverCalled>("Present", "-noSuchSelector"),
  };
  auto report = platform::installRows(rows);
  ASSERT_EQ(report.size(), 2u);
  EXPECT_EQ(report[0].status, InstallStatus::kClassMissing);
  EXPECT_EQ(report[1].status, InstallStatus::kSelectorMissing);
  EXPECT_EQ(platform::describe(report[0]), "skipped NoSuchClassAnywhere -value (class missing)");
  EXPECT_EQ(platform::describe(report[1]), "skipped Present -noSuchSelector (selector missing)");
  EXPECT_EQ(send<int>(newInstance(cls), kValue), 1);
  EXPECT_FALSE(Hook<&neverCalled>::slots.installed);
}

double realValue(id, SEL) {
  return 2.5;
}

TEST(Hook, SignatureMismatchLeavesTheMethodAlone) {
  Class cls = defineClass("RealValue", nullptr, {{"value", imp(realValue), "d@:"}});
  auto status = platform::installRow(platform::replaced<&neverCalled>("RealValue", "-value"));
  EXPECT_EQ(status, InstallStatus::kSignatureMismatch);
  EXPECT_EQ(send<double>(newInstance(cls), kValue), 2.5);
  EXPECT_EQ(Hook<&neverCalled>::slots.saved, nullptr);
  EXPECT_EQ(Hook<&neverCalled>::original(nullptr, kValue), 0) << "nothing saved answers zero";
}

int addedValue(id, SEL) {
  return 77;
}

TEST(Hook, AddedMethodsNeverReplaceAnExistingOne) {
  Class has = defineClass("HasValue", nullptr, {{"value", imp(baseValue), "i@:"}});
  Class lacks = defineClass("LacksValue", nullptr, {});
  const Row rows[] = {
      platform::added<&addedValue>("HasValue", "-value", "i@:"),
      platform::added<&addedValue>("LacksValue", "-value", "i@:"),
      platform::added<&addedValue>("MissingForAddition", "-value", "i@:"),
  };
  auto report = platform::installRows(rows);
  EXPECT_EQ(report[0].status, InstallStatus::kAlreadyPresent);
  EXPECT_EQ(report[1].status, InstallStatus::kAdded);
  EXPECT_EQ(report[2].status, InstallStatus::kClassMissing);
  EXPECT_EQ(send<int>(newInstance(has), kValue), 1);
  EXPECT_EQ(send<int>(newInstance(lacks), kValue), 77);
  EXPECT_STREQ(method_getTypeEncoding(class_getInstanceMethod(lacks, kValue)), "i@:");
  EXPECT_EQ(platform::describe(report[1]), "added LacksValue -value");
}

TEST(Hook, SameSelectorOnAClassAndItsSubclass) {
  // Subclass with its own method: each replacement wraps its own class's.
  defineClass("PairBase", nullptr, {{"value", imp(baseValue), "i@:"}});
  Class derived = defineClass("PairDerived", "PairBase", {{"value", imp(derivedOwnValue), "i@:"}});
  EXPECT_EQ(platform::installRow(platform::replaced<&plus100>("PairBase", "-value")),
            InstallStatus::kInstalled);
  EXPECT_EQ(platform::installRow(platform::replaced<&plus1000>("PairDerived", "-value")),
            InstallStatus::kInstalled);
  EXPECT_EQ(send<int>(newInstance(platform::classNamed("PairBase")), kValue), 101);
  EXPECT_EQ(send<int>(newInstance(derived), kValue), 1010);
}

TEST(Hook, SubclassFirstThenItsSuperclassChainsThroughBoth) {
  // Installed subclass-first over an inherited method: the subclass's stub
  // finds the superclass's replacement installed afterwards.
  defineClass("ChainBase", nullptr, {{"value", imp(baseValue), "i@:"}});
  Class derived = defineClass("ChainDerived", "ChainBase", {});
  EXPECT_EQ(platform::installRow(platform::replaced<&plus1000>("ChainDerived", "-value")),
            InstallStatus::kInstalledInherited);
  EXPECT_EQ(platform::installRow(platform::replaced<&plus100>("ChainBase", "-value")),
            InstallStatus::kInstalled);
  EXPECT_EQ(send<int>(newInstance(derived), kValue), 1101);
}

TEST(Hook, ARowIsInstalledOnceAndNeverSavesItsOwnReplacement) {
  Class cls = defineClass("Twice", nullptr, {{"value", imp(baseValue), "i@:"}});
  const Row row = platform::replaced<&plus100>("Twice", "-value");
  EXPECT_EQ(platform::installRow(row), InstallStatus::kInstalled);
  EXPECT_EQ(platform::installRow(row), InstallStatus::kAlreadyInstalled);
  EXPECT_EQ(Hook<&plus100>::slots.saved, imp(baseValue));
  EXPECT_EQ(send<int>(newInstance(cls), kValue), 101);

  // The same replacement named by a second row is refused too: its slots
  // belong to the first.
  Class other = defineClass("TwiceOther", nullptr, {{"value", imp(baseValue), "i@:"}});
  EXPECT_EQ(platform::installRow(platform::replaced<&plus100>("TwiceOther", "-value")),
            InstallStatus::kAlreadyInstalled);
  EXPECT_EQ(send<int>(newInstance(other), kValue), 1);
}

TEST(Hook, PendingAndMalformedRowsAreNotInstalled) {
  Class cls = defineClass("Later", nullptr, {{"value", imp(baseValue), "i@:"}});
  const Row rows[] = {
      platform::pendingRow("Later", "-value"),
      platform::replaced<&neverCalled>("Later", "value"),
  };
  auto report = platform::installRows(rows);
  EXPECT_EQ(report[0].status, InstallStatus::kPending);
  EXPECT_EQ(platform::describe(report[0]), "pending Later -value");
  EXPECT_EQ(report[1].status, InstallStatus::kMalformed);
  EXPECT_EQ(send<int>(newInstance(cls), kValue), 1);
}

// Arguments of every calling class pass through unchanged, both through an
// exchanged method and through the super-call stub.
test::Box scaleBox(id, SEL, test::Box b, double f, float g, long n, id tag, unsigned char flag) {
  double k = f * g * static_cast<double>(n) * (tag != nullptr ? 1 : -1) * (flag ? 1 : -1);
  return {b.x * k, b.y * k, b.w * k, b.h * k};
}
test::Box scaleOwnHook(id self, SEL cmd, test::Box b, double f, float g, long n, id tag,
                       unsigned char flag) {
  return Hook<&scaleOwnHook>::original(self, cmd, b, f, g, n, tag, flag);
}
test::Box scaleInheritedHook(id self, SEL cmd, test::Box b, double f, float g, long n, id tag,
                             unsigned char flag) {
  return Hook<&scaleInheritedHook>::original(self, cmd, b, f, g, n, tag, flag);
}

TEST(Hook, StructAndFloatingPointArgumentsPassThroughUnchanged) {
  const char* types = "{Box=dddd}@:{Box=dddd}dfl@C";
  Class own =
      defineClass("ScaleOwn", nullptr, {{"scale:by:and:times:tag:flag:", imp(scaleBox), types}});
  Class derived = defineClass("ScaleDerived", "ScaleOwn", {});
  Class sibling = defineClass("ScaleSibling", nullptr,
                              {{"scale:by:and:times:tag:flag:", imp(scaleBox), types}});
  EXPECT_EQ(platform::installRow(
                platform::replaced<&scaleOwnHook>("ScaleSibling", "-scale:by:and:times:tag:flag:")),
            InstallStatus::kInstalled);
  EXPECT_EQ(platform::installRow(platform::replaced<&scaleInheritedHook>(
                "ScaleDerived", "-scale:by:and:times:tag:flag:")),
            InstallStatus::kInstalledInherited);
  const Sel sel("scale:by:and:times:tag:flag:");
  test::Box in{1.5, -2.25, 3.0, 4.125};
  for (Class cls : {own, derived, sibling}) {
    id obj = newInstance(cls);
    auto out = send<test::Box>(obj, sel, in, 2.0, 0.5f, 3L, obj, static_cast<unsigned char>(1));
    EXPECT_DOUBLE_EQ(out.x, 4.5) << class_getName(cls);
    EXPECT_DOUBLE_EQ(out.y, -6.75) << class_getName(cls);
    EXPECT_DOUBLE_EQ(out.w, 9.0) << class_getName(cls);
    EXPECT_DOUBLE_EQ(out.h, 12.375) << class_getName(cls);
    auto negated =
        send<test::Box>(obj, sel, in, 2.0, 0.5f, 3L, id{nullptr}, static_cast<unsigned char>(1));
    EXPECT_DOUBLE_EQ(negated.x, -4.5) << class_getName(cls);
  }
}

// GCC's runtime: replacing a method of a never-messaged class must not leak
// the replacement into other never-messaged classes, nor skip their
// +initialize.
int leakyProbe(id self, SEL cmd) {
  return Hook<&leakyProbe>::original(self, cmd) + 1;
}
bool bystanderInitialized = false;
void bystanderInitialize(id, SEL) {
  bystanderInitialized = true;
}

TEST(Hook, ReplacingOnAnUnmessagedClassLeavesOtherUnmessagedClassesAlone) {
  defineClass("Unmessaged", nullptr, {{"probeValue", imp(baseValue), "i@:"}});
  Class bystander = defineClass("UnmessagedBystander", nullptr, {},
                                {{"initialize", imp(bystanderInitialize), "v@:"}});
  ASSERT_EQ(platform::installRow(platform::replaced<&leakyProbe>("Unmessaged", "-probeValue")),
            InstallStatus::kInstalled);
  // The bystander's very first lookup is for the replaced selector.
  id obj = class_createInstance(bystander, 0);
#if !KV_APPLE_RUNTIME
  IMP found = objc_msg_lookup(obj, Sel("probeValue"));
#else
  IMP found = class_getMethodImplementation(bystander, Sel("probeValue"));
#endif
  EXPECT_NE(found, Hook<&leakyProbe>::info().replacement);
  EXPECT_TRUE(bystanderInitialized);
  EXPECT_FALSE(platform::respondsTo(obj, Sel("probeValue")));
  EXPECT_EQ(send<int>(newInstance(platform::classNamed("Unmessaged")), Sel("probeValue")), 2);
  object_dispose(obj);
}

// A subclass that was messaged before the interception, and has methods of
// its own, inherits the replacement too (GCC's runtime keeps a copy of the
// inherited implementation in such a subclass's dispatch table).
TEST(Hook, AMessagedSubclassSeesItsSuperclassesReplacement) {
  defineClass("LateBase", nullptr, {{"value", imp(baseValue), "i@:"}});
  Class derived = defineClass("LateDerived", "LateBase", {{"other", imp(derivedOwnValue), "i@:"}});
  id d = newInstance(derived);
  ASSERT_EQ(send<int>(d, kValue), 1);
  EXPECT_EQ(platform::installRow(platform::replaced<&plus100>("LateBase", "-value")),
            InstallStatus::kInstalled);
  EXPECT_EQ(send<int>(d, kValue), 101);
}

BOOL retainedThroughHook(id self, SEL cmd) {
  return !Hook<&retainedThroughHook>::original(self, cmd);
}

// The same with Foundation's own class cluster: a concrete invocation at work
// before its abstract class's method is replaced answers the replacement.
TEST(Hook, AFoundationSubclassAtWorkSeesTheReplacement) {
  platform::AutoreleasePool pool;
  id signature = sendClass<id>(platform::classNamed("NSMethodSignature"),
                               Sel("signatureWithObjCTypes:"), "v@:");
  id early = sendClass<id>(platform::classNamed("NSInvocation"),
                           Sel("invocationWithMethodSignature:"), signature);
  ASSERT_EQ(send<BOOL>(early, Sel("argumentsRetained")), 0);
  EXPECT_EQ(platform::installRow(
                platform::replaced<&retainedThroughHook>("NSInvocation", "-argumentsRetained")),
            InstallStatus::kInstalled);
  EXPECT_EQ(send<BOOL>(early, Sel("argumentsRetained")), 1) << platform::classNameOf(early);
}

}  // namespace
}  // namespace kv
