// Automation objects: exact reference counts through everything a script
// does with an object, the VARIANT conversions, the class registry, and the
// two ways a host writes an object (the C++ base class, the C member table).
#include <orvobasic/CAutomationObject.h>
#include <orvobasic/COrvoBasic.h>
#include <orvobasic/automation.h>

#include "HostTestUtil.h"
#include "functions/AutomationConvert.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <thread>
#include <vector>

namespace {

// Every live Counted, oldest first; the counts are read from here.
std::vector<class Counted*> g_counted;

class Counted : public ob::CAutomationObject {
public:
    Counted() : CAutomationObject(u"Unit.Counted") {
        g_counted.push_back(this);
        AddProperty(u"Peer", [this] { return m_peer; }, [this](const CVarBase& v) { m_peer.SetValue(v); });
        AddMethod(u"Self", 0, [this](const Args&) { return CVarBase(static_cast<IDispatch*>(this)); });
        AddMethod(u"Fail", -1, [](const Args&) -> CVarBase { throw ob::AutomationError("refused"); });
    }
    ~Counted() override { g_counted.erase(std::find(g_counted.begin(), g_counted.end(), this)); }

private:
    CVarBase m_peer;
};

std::string Text(const VARIANT& v) {
    return v.vt == VT_BSTR ? CString(v.bstrVal, SysStringLen(v.bstrVal)).ToUtf8() : "<not text>";
}

VARIANT Make(VARTYPE vt) {
    VARIANT v;
    VariantInit(&v);
    v.vt = vt;
    return v;
}

class AutomationScriptTest : public ob::test::InterpreterTest {
protected:
    void SetUp() override {
        InterpreterTest::SetUp();
        ob::RegisterAutomationClass(u"Unit.Counted", [] { return static_cast<IDispatch*>(new Counted); });
    }
    void Run(const std::string& text) { ASSERT_TRUE(B().ExecuteProgram(m_dir.WPath(m_dir.Write("s.bas", text)))); }

    ob::test::TempDir m_dir;
};

// ---- reference counts ------------------------------------------------------

TEST_F(AutomationScriptTest, ReferencesAreCountedExactlyAndAllGoWithTheInterpreter) {
    const std::string kNew = "createobject(\"Unit.Counted\")";
    struct Case {
        const char* what;
        std::string script;
        uint32_t refs;   // of the oldest object still alive after the run
        size_t live;
    } cases[] = {
        {"create", "o = " + kNew + "\n", 1, 1},
        {"copies into arrays", "o = " + kNew + "\ndim a[3]\na[0] = o\na[2] = o\nb = a\n", 5, 1},
        {"element overwritten", "o = " + kNew + "\ndim a[2]\na[1] = o\na[1] = 5\n", 1, 1},
        {"variable overwritten", "o = " + kNew + "\no = " + kNew + "\n", 1, 1},
        {"passed to a function", "o = " + kNew + "\nn = keep(o)\nend\nfunction keep(x)\n  y = x\n  keep = 1\nendfunction\n",
         1, 1},
        {"returned from a function", "p = make()\nend\nfunction make()\n  make = " + kNew + "\nendfunction\n", 1, 1},
        {"kept by a global", "global g\no = " + kNew + "\ncall store(o)\nend\nsub store(x)\n  g = x\nendsub\n", 2, 1},
        {"recursion", "o = " + kNew + "\nn = deep(o, 4)\nend\nfunction deep(x, k)\n  mine = x\n  if k > 0 then\n"
                      "    deep = deep(x, k - 1)\n  else\n    deep = 0\n  endif\nendfunction\n", 1, 1},
        {"returned by a method", "o = " + kNew + "\nc = o.Self()\nd = c\n", 3, 1},
        {"held by a released object", "o = " + kNew + "\np = " + kNew + "\np.Peer = o\np = 0\n", 1, 1},
        {"failed calls", "o = " + kNew + "\nx = o.Nosuch(o, o)\nx = o.Fail(o, o)\no.Nosuch = o\n", 1, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        m_basic = std::make_unique<COrvoBasic>();
        Run(c.script);
        ASSERT_EQ(g_counted.size(), c.live);
        EXPECT_EQ(g_counted.front()->RefCount(), c.refs);
        m_basic.reset();
        EXPECT_TRUE(g_counted.empty());
    }
}

TEST_F(AutomationScriptTest, AnObjectTheHostHandsInIsReleasedWithTheVariables) {
    auto* object = new Counted;
    Run("stayresident\nevent create Take, take\nend\nfunction take(x)\n  kept = x\n  took = 1\nendfunction\n");
    CBasicVariable arg;
    arg.SetValue(static_cast<IDispatch*>(object));
    CArgArray args{arg};
    B().EventThrow(u"Take", args);
    args.clear();
    arg = 0;
    EXPECT_EQ(object->RefCount(), 1u);   // the handler's locals let go at its return
    m_basic.reset();
    EXPECT_EQ(object->Release(), 0u);
    EXPECT_TRUE(g_counted.empty());
}

// ---- failures as the user sees them -----------------------------------------

HRESULT FillLater(EXCEPINFO* e) {
    e->bstrDescription = SysAllocString(u"filled late");
    e->scode = E_INVALIDARG;
    return S_OK;
}

TEST_F(AutomationScriptTest, FailuresShowTheObjectsDescriptionOrTheCodesMeaning) {
    EXCEPINFO exception{};
    exception.bstrSource = SysAllocString(u"Src");
    exception.bstrHelpFile = SysAllocString(u"help");
    exception.pfnDeferredFillIn = reinterpret_cast<void*>(&FillLater);
    EXPECT_FALSE(B().HandleAutomationError(DISP_E_EXCEPTION, exception));
    EXPECT_EQ(exception.bstrSource, nullptr);   // taken over and freed
    EXCEPINFO none{};
    EXPECT_FALSE(B().HandleAutomationError(DISP_E_UNKNOWNNAME, none));
    EXPECT_FALSE(B().HandleAutomationError(static_cast<HRESULT>(0x80001234), none));
    EXPECT_TRUE(B().HandleAutomationError(S_OK, none));
    ASSERT_EQ(m_desktop.Boxes().size(), 3u);
    EXPECT_EQ(m_desktop.Boxes()[0].text.ToUtf8(), "Src: filled late (0x80070057)");
    EXPECT_EQ(m_desktop.Boxes()[1].text.ToUtf8(), "Unknown name (0x80020006)");
    EXPECT_EQ(m_desktop.Boxes()[2].text.ToUtf8(), "Automation error (0x80001234)");
}

// ---- conversions ------------------------------------------------------------

TEST(AutomationConversion, OtherTypesBecomeTextLocaleFree) {
    struct Case {
        VARIANT value;
        const char* text;
    };
    auto date = [](double d) { VARIANT v = Make(VT_DATE); v.date = d; return v; };
    auto cy = [](int64_t units) { VARIANT v = Make(VT_CY); v.llVal = units; return v; };
    VARIANT flag = Make(VT_BOOL);
    flag.boolVal = VARIANT_TRUE;
    VARIANT big = Make(VT_I8);
    big.llVal = -1099511627776LL;
    VARIANT byte = Make(VT_UI1);
    byte.bVal = 200;
    VARIANT real = Make(VT_R8);
    real.dblVal = 0.1;
    Case cases[] = {
        {date(45306.4375), "2024-01-15 10:30:00"}, {date(45306.0), "2024-01-15"}, {date(0.5), "12:00:00"},
        {date(-1.25), "1899-12-29 06:00:00"},      {date(45306.99999999), "2024-01-16"},
        {cy(125000), "12.5"},                      {cy(-5), "-0.0005"},
        {flag, "-1"},                              {big, "-1099511627776"},
        {byte, "200"},                             {real, "0.1"},
    };
    for (Case& c : cases) {
        VARIANT out;
        VariantInit(&out);
        ASSERT_EQ(VariantChangeType(&out, &c.value, 0, VT_BSTR), S_OK) << c.text;
        EXPECT_EQ(Text(out), c.text);
        VariantClear(&out);
    }
}

TEST(AutomationConversion, RefusedConversionsLeaveTheTargetAlone) {
    VARIANT target = Make(VT_I4);
    target.lVal = 9;
    VARIANT sources[] = {Make(VT_DISPATCH), Make(VT_ERROR), Make(VT_UNKNOWN), Make(VT_BSTR | VT_BYREF), Make(VT_DATE)};
    sources[4].date = 1e9;   // beyond the last representable day
    for (VARIANT& source : sources) {
        EXPECT_NE(VariantChangeType(&target, &source, 0, VT_BSTR), S_OK);
        EXPECT_EQ(target.vt, VT_I4);
        EXPECT_EQ(target.lVal, 9);
    }
    // text to number: the whole text must be a number; halves round to even
    const std::pair<const char16_t*, int> numbers[] = {{u"2.5", 2}, {u"3.5", 4}, {u" 7 ", 7}, {u"-1", -1}};
    for (const auto& [text, expected] : numbers) {
        VARIANT s = Make(VT_BSTR);
        s.bstrVal = SysAllocString(text);
        ASSERT_EQ(VariantChangeType(&s, &s, 0, VT_I4), S_OK);   // in place: the text is freed
        EXPECT_EQ(s.lVal, expected);
    }
    for (const char16_t* bad : {u"abc", u"12x", u"1e10", u""}) {
        VARIANT s = Make(VT_BSTR);
        s.bstrVal = SysAllocString(bad);
        EXPECT_NE(VariantChangeType(&target, &s, 0, VT_I4), S_OK);
        VariantClear(&s);
    }
}

TEST(AutomationConversion, ScriptValuesGoOutAsWholeNumbersObjectsOrText) {
    Counted* object = new Counted;
    const std::pair<CVarBase, std::string> cases[] = {
        {CVarBase(2.9), "I4 2"},   {CVarBase(-2.9), "I4 -2"},   {CVarBase(1e12), "I4 2147483647"},
        {CVarBase(true), "I4 1"},  {CVarBase(u"x"), "BSTR x"},  {CVarBase(), "BSTR "},
    };
    for (const auto& [value, expected] : cases) {
        VARIANT v;
        ob::BasicVarToVariant(value, v);
        EXPECT_EQ(v.vt == VT_I4 ? "I4 " + std::to_string(v.lVal) : "BSTR " + Text(v), expected);
        VariantClear(&v);
    }
    VARIANT v;
    ob::BasicVarToVariant(CVarBase(static_cast<IDispatch*>(object)), v);
    EXPECT_EQ(v.vt, VT_DISPATCH);
    EXPECT_EQ(object->RefCount(), 2u);
    VariantClear(&v);
    EXPECT_EQ(object->Release(), 0u);

    CBasicVariable out;
    VARIANT flag = Make(VT_BOOL);
    flag.boolVal = VARIANT_TRUE;
    ob::VariantToBasicVar(flag, out);
    EXPECT_EQ(out.GetType(), BVT_STRING);
    EXPECT_EQ(out.GetStringValue().ToUtf8(), "-1");
    VariantClear(&flag);   // converted in place: it holds the text now
    VARIANT error = Make(VT_ERROR);
    ob::VariantToBasicVar(error, out);
    EXPECT_FALSE(out.IsSet());
    VARIANT single = Make(VT_R4);
    single.fltVal = 2.5f;
    ob::VariantToBasicVar(single, out);
    EXPECT_EQ(out.GetNumberValue(), 2.5);
}

// ---- registry ---------------------------------------------------------------

TEST(AutomationRegistry, IdentifiersIgnoreCaseAndCanBeReplacedOrRemoved) {
    HRESULT code = S_OK;
    EXPECT_EQ(ob::CreateAutomationObject(u"Unit.Missing", &code), nullptr);
    EXPECT_EQ(code, CO_E_CLASSSTRING);
    EXPECT_FALSE(ob::RegisterAutomationClass(u"", [] { return static_cast<IDispatch*>(new Counted); }));

    ob::RegisterAutomationClass(u"Unit.Reg", [] { return static_cast<IDispatch*>(new Counted); });
    IDispatch* made = ob::CreateAutomationObject(u"UNIT.reg", &code);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(code, S_OK);
    made->Release();

    ob::RegisterAutomationClass(u"unit.reg", [] { return static_cast<IDispatch*>(nullptr); });
    EXPECT_EQ(ob::CreateAutomationObject(u"Unit.Reg", &code), nullptr);
    EXPECT_EQ(code, E_FAIL);
    ob::RegisterAutomationClass(u"unit.reg", []() -> IDispatch* { throw std::runtime_error("no"); });
    EXPECT_EQ(ob::CreateAutomationObject(u"Unit.Reg", &code), nullptr);
    EXPECT_EQ(code, E_FAIL);
    EXPECT_EQ(OB_RegisterAutomationClassUtf8("Unit.Reg", nullptr), 1);
    EXPECT_EQ(ob::CreateAutomationObject(u"Unit.Reg", &code), nullptr);
    EXPECT_EQ(code, CO_E_CLASSSTRING);
    EXPECT_EQ(OB_RegisterAutomationClass(nullptr, nullptr), 0);
    EXPECT_TRUE(g_counted.empty());
}

IDispatch* MakeEmptyCObject(const char16_t*) { return OB_CreateAutomationObject(nullptr, 0, nullptr, nullptr); }

TEST(AutomationRegistry, ThreadsRegisterAndCreateAtTheSameTime) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            CString own = u"Unit.Thread" + ob::HexCode(t);
            for (int i = 0; i < 300; ++i) {
                OB_RegisterAutomationClass(own.c_str(), MakeEmptyCObject);
                OB_RegisterAutomationClassUtf8("Unit.Shared", MakeEmptyCObject);
                for (const CString& id : {own, CString(u"Unit.Shared")})
                    if (IDispatch* o = ob::CreateAutomationObject(id)) OB_ReleaseObject(o);
            }
        });
    for (auto& thread : threads) thread.join();
    IDispatch* o = ob::CreateAutomationObject(u"unit.shared");
    ASSERT_NE(o, nullptr);
    EXPECT_EQ(OB_ReleaseObject(o), 0u);
}

// ---- objects written with the base class and with the C table -----------------

TEST(AutomationHostObjects, BaseClassFindsMembersAndTurnsThrowsIntoExceptions) {
    IDispatch* object = new Counted;
    const OLECHAR* names[] = {u"self", u"PEER", u"none"};
    DISPID ids[3];
    EXPECT_EQ(object->GetIDsOfNames(names, 3, LOCALE_SYSTEM_DEFAULT, ids), DISP_E_UNKNOWNNAME);
    EXPECT_GT(ids[0], 0);
    EXPECT_GT(ids[1], 0);
    EXPECT_EQ(ids[2], DISPID_UNKNOWN);

    VARIANT result;
    VariantInit(&result);
    EXCEPINFO exception{};
    DISPPARAMS none{nullptr, nullptr, 0, 0};
    EXPECT_EQ(object->Invoke(ids[0], 0, DISPATCH_PROPERTYPUT, &none, nullptr, &exception, nullptr),
              DISP_E_MEMBERNOTFOUND);   // a method cannot be written
    VARIANT one = Make(VT_I4);
    DISPPARAMS oneArg{&one, nullptr, 1, 0};
    EXPECT_EQ(object->Invoke(ids[0], 0, DISPATCH_METHOD, &oneArg, &result, &exception, nullptr),
              DISP_E_BADPARAMCOUNT);
    const OLECHAR* failName[] = {u"Fail"};
    DISPID fail = 0;
    ASSERT_EQ(object->GetIDsOfNames(failName, 1, 0, &fail), S_OK);
    ASSERT_EQ(object->Invoke(fail, 0, DISPATCH_METHOD, &none, &result, &exception, nullptr), DISP_E_EXCEPTION);
    EXPECT_EQ(CString(exception.bstrDescription).ToUtf8(), "refused");
    EXPECT_EQ(CString(exception.bstrSource).ToUtf8(), "Unit.Counted");
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
    EXPECT_EQ(object->Release(), 0u);
}

int g_destroyed = 0;
std::string g_seen;

HRESULT Describe(void* state, uint16_t kind, const VARIANT* args, uint32_t count, VARIANT* result, EXCEPINFO*) {
    g_seen = std::to_string(*static_cast<int*>(state)) + " kind " + std::to_string(kind) + ":";
    for (uint32_t i = 0; i < count; ++i) g_seen += " " + std::to_string(args[i].lVal);
    result->vt = VT_I4;
    result->lVal = static_cast<int32_t>(count);
    return S_OK;
}

TEST(AutomationHostObjects, CTableObjectPassesArgumentsInScriptOrderAndDestroysOnce) {
    static int state = 7;
    const OB_AutomationMember members[] = {{"Call", DISPATCH_METHOD, Describe},
                                           {"Prop", DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT, Describe}};
    IDispatch* object = OB_CreateAutomationObject(members, 2, &state, [](void* s) {
        ++g_destroyed;
        EXPECT_EQ(s, &state);
    });
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(OB_CreateAutomationObject(nullptr, 1, nullptr, nullptr), nullptr);

    VARIANT args[3] = {Make(VT_I4), Make(VT_I4), Make(VT_I4)};
    args[0].lVal = 3;   // last argument first, as callers pass them
    args[1].lVal = 2;
    args[2].lVal = 1;
    DISPPARAMS params{args, nullptr, 3, 0};
    VARIANT result;
    VariantInit(&result);
    const OLECHAR* names[] = {u"CALL", u"prop"};
    DISPID ids[2];
    ASSERT_EQ(object->GetIDsOfNames(names, 2, 0, ids), S_OK);
    ASSERT_EQ(object->Invoke(ids[0], 0, DISPATCH_METHOD, &params, &result, nullptr, nullptr), S_OK);
    EXPECT_EQ(g_seen, "7 kind 1: 1 2 3");
    EXPECT_EQ(result.lVal, 3);
    EXPECT_EQ(object->Invoke(ids[0], 0, DISPATCH_PROPERTYGET, &params, &result, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND);
    DISPID named = DISPID_PROPERTYPUT;
    DISPPARAMS put{args, &named, 1, 1};
    ASSERT_EQ(object->Invoke(ids[1], 0, DISPATCH_PROPERTYPUT, &put, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(g_seen, "7 kind 4: 3");

    EXPECT_EQ(OB_AddRefObject(object), 2u);
    EXPECT_EQ(OB_ReleaseObject(object), 1u);
    EXPECT_EQ(g_destroyed, 0);
    EXPECT_EQ(OB_ReleaseObject(object), 0u);
    EXPECT_EQ(g_destroyed, 1);
    EXPECT_EQ(OB_ReleaseObject(nullptr), 0u);
}

}  // namespace
