// Event arguments of any shape, through the real `Invoke` of a sink. KESTRELGUARD_SEED=N tries that seed
// alone; KESTRELGUARD_LONG makes it a long run.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <random>

#include "SinkFixture.h"

namespace kestrelguard {

using namespace fakes;

namespace {

constexpr DISPID kKnown[] = {250, 259, 106, 104, 270, 252, 251, 258, 108, 113, 263};

/// Memory that ends where no more may be read: whoever reads or writes behind it ends the test.
class Guarded {
 public:
    explicit Guarded(std::size_t size) {
        m_pages =
            static_cast<char*>(VirtualAlloc(nullptr, 2 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        DWORD old = 0;
        VirtualProtect(m_pages + kPage, kPage, PAGE_NOACCESS, &old);
        m_start = m_pages + kPage - size;
    }
    ~Guarded() { VirtualFree(m_pages, 0, MEM_RELEASE); }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    void* Start() const { return m_start; }

 private:
    static constexpr std::size_t kPage = 4096;
    char* m_pages;
    char* m_start;
};

/// One call's arguments, with all that they refer to.
class Call {
 public:
    Call(std::mt19937& random, IDispatch* object)
        : m_random(random), m_object(object), m_count(Pick(10)), m_memory(m_count * sizeof(VARIANTARG)) {
        m_parameters.cArgs = m_count;
        m_parameters.rgvarg = m_count == 0 ? nullptr : static_cast<VARIANTARG*>(m_memory.Start());
        for (UINT i = 0; i < m_count; ++i) {
            m_parameters.rgvarg[i] = Any(0);
        }
        if (Pick(20) == 0) {
            m_parameters.rgvarg = nullptr;
        }
        if (Pick(20) == 0) {
            m_parameters.cNamedArgs = 1;
            m_parameters.rgdispidNamedArgs = &m_named;
        }
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    ~Call() {
        for (VARIANT& value : m_owned) {
            VariantClear(&value);
        }
    }

    DISPPARAMS& Parameters() { return m_parameters; }
    std::string Text() const {
        std::string text = std::to_string(m_parameters.cArgs) + " arguments:";
        for (UINT i = 0; m_parameters.rgvarg != nullptr && i < m_count; ++i) {
            text += " " + std::to_string(m_parameters.rgvarg[i].vt);
        }
        return text;
    }

 private:
    unsigned Pick(unsigned below) { return static_cast<unsigned>(m_random() % below); }
    BSTR AnyText() {
        const unsigned length = Pick(8) == 0 ? 70000 : Pick(60);
        const BSTR text = SysAllocStringLen(nullptr, length);
        for (unsigned i = 0; i < length; ++i) {
            text[i] = static_cast<wchar_t>(m_random());
        }
        return text;
    }
    /// A value that belongs to this, to be referred to.
    VARIANT& Kept(const VARIANT& value) { return m_owned.emplace_back(value); }
    VARIANT Own(const VARIANT& value) {
        // The caller's copy is the same reference; it is given back once.
        return m_owned.emplace_back(value);
    }
    VARIANT Any(int depth) {
        VARIANT value{};
        switch (Pick(20)) {
            case 0:
                value.vt = VT_NULL;
                break;
            case 1:
                value.vt = VT_I2;
                value.iVal = static_cast<SHORT>(m_random());
                break;
            case 2:
                value.vt = VT_I4;
                value.lVal = static_cast<LONG>(m_random());
                break;
            case 3:
                value.vt = VT_R8;
                value.dblVal = Pick(2) == 0 ? 1e300 : -1.5;
                break;
            case 4:
                value.vt = VT_BOOL;
                value.boolVal = static_cast<VARIANT_BOOL>(m_random());
                break;
            case 5:
                value.vt = VT_BSTR;
                value.bstrVal = Pick(4) == 0 ? nullptr : AnyText();
                return Own(value);
            case 6:
            case 7:
                value.vt = Pick(4) == 0 ? VT_UNKNOWN : VT_DISPATCH;
                if (Pick(4) != 0) {
                    m_object->AddRef();
                    value.pdispVal = m_object;
                }
                return Own(value);
            case 8:
                value.vt = VT_ERROR;
                value.scode = DISP_E_PARAMNOTFOUND;
                break;
            case 9:
                value.vt = VT_ARRAY | VT_UI1;
                value.parray = Pick(4) == 0 ? nullptr : SafeArrayCreateVector(VT_UI1, 0, Pick(50));
                return Own(value);
            case 10:
                value.vt = VT_BYREF | VT_BOOL;
                value.pboolVal = Pick(8) == 0 ? nullptr : &Kept(Bare(VT_BOOL)).boolVal;
                break;
            case 11:
                value.vt = VT_BYREF | VT_DISPATCH;
                value.ppdispVal = Pick(8) == 0 ? nullptr : &Kept(Bare(VT_DISPATCH)).pdispVal;
                break;
            case 12:
                value.vt = VT_BYREF | VT_BSTR;
                value.pbstrVal = Pick(8) == 0 ? nullptr : &Kept(Bare(VT_BSTR)).bstrVal;
                break;
            case 13:
                value.vt = VT_BYREF | VT_I4;
                value.plVal = Pick(8) == 0 ? nullptr : &Kept(Bare(VT_I4)).lVal;
                break;
            case 14:
            case 15:
            case 16:
            case 17:
                value.vt = VT_BYREF | VT_VARIANT;
                value.pvarVal = Pick(12) == 0 || depth > 6 ? nullptr : &Referred(depth + 1);
                break;
            case 18:
                // Types that no system knows, and types that never stand in a VARIANT.
                value.vt = static_cast<VARTYPE>(m_random() & 0x1fff);
                break;
            default:
                break;  // VT_EMPTY
        }
        return value;
    }
    static VARIANT Bare(VARTYPE type) {
        VARIANT value{};
        value.vt = type;
        return value;
    }
    VARIANT& Referred(int depth) {
        const VARIANT value = Any(depth);
        // A copy to refer to: what it holds belongs to the one before it.
        return m_referred.emplace_back(value);
    }

    std::mt19937& m_random;
    IDispatch* m_object;
    const UINT m_count;
    Guarded m_memory;
    DISPPARAMS m_parameters{};
    DISPID m_named = 0;
    std::deque<VARIANT> m_owned;
    std::deque<VARIANT> m_referred;
};

unsigned FromEnvironment(const char* name, unsigned otherwise) {
    const char* const text = std::getenv(name);
    return text != nullptr ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

TEST(InvokeFuzzTest, ArgumentsOfAnyShapeAreAnswered) {
    const ComApartment apartment;
    const auto receiver = MakeCom<Receiver>();
    const auto browser = MakeCom<FakeBrowser>();
    const auto object = MakeCom<Stranger>();
    auto sink = MakeCom<cBrowser>();
    sink->SetInterFace(ComPtr<IBrowser>(receiver.Get()));
    sink->SetBrowser(ComPtr<IWebBrowser2>(browser.Get()));
    const auto events = browser->connections->Sink();
    ASSERT_TRUE(events);
    // What a receiver does with what it gets: it reads all, and writes Cancel.
    receiver->in = [&] {
        const std::string& name = receiver->calls.back();
        const std::size_t count = receiver->pointers.size();
        const bool cancels = name == "BeforeNavigate2" || name == "FileDownload" || name == "NewWindow2" ||
                             name == "WindowClosing";
        const std::size_t first =
            name == "BeforeNavigate2" || name == "NavigateComplete2" || name == "DocumentComplete";
        if (name != "NewWindow2" && name != "TitleChange") {
            for (std::size_t i = first; i < count - (cancels ? 1 : 0); ++i) {
                VARIANT copy{};
                static_cast<void>(
                    VariantCopyInd(&copy, static_cast<VARIANT*>(const_cast<void*>(receiver->pointers[i]))));
                VariantClear(&copy);
            }
        }
        if (cancels) {
            *static_cast<VARIANT_BOOL*>(const_cast<void*>(receiver->pointers[count - 1])) = VARIANT_TRUE;
        }
    };

    const unsigned one = FromEnvironment("KESTRELGUARD_SEED", 0);
    const unsigned seeds = std::getenv("KESTRELGUARD_LONG") != nullptr ? 5000 : 20;
    int delivered = 0;
    int refused = 0;
    for (unsigned seed = one != 0 ? one : 1; seed <= (one != 0 ? one : seeds); ++seed) {
        std::mt19937 random(seed);
        for (int number = 0; number < 1000; ++number) {
            Call call(random, object.Get());
            const bool known = random() % 8 != 0;
            const DISPID id = known ? kKnown[random() % std::size(kKnown)] : static_cast<DISPID>(random());
            const bool listened = std::find(std::begin(kKnown), std::end(kKnown), id) != std::end(kKnown);
            const std::string what = "seed " + std::to_string(seed) + ", call " + std::to_string(number) +
                                     ", id " + std::to_string(id) + ", " + call.Text();
            EXCEPINFO exception{};
            UINT bad = 0;
            VARIANT result{};
            receiver->calls.clear();
            receiver->pointers.clear();
            const HRESULT hr = events->Invoke(
                id, IID_NULL, 0, DISPATCH_METHOD, random() % 50 == 0 ? nullptr : &call.Parameters(),
                random() % 2 == 0 ? nullptr : &result, random() % 2 == 0 ? nullptr : &exception,
                random() % 2 == 0 ? nullptr : &bad);
            const bool reached = receiver->calls.size() == 2;
            if (hr == S_OK) {
                ASSERT_EQ(listened, reached) << what;
                ++delivered;
            } else {
                ASSERT_TRUE(receiver->calls.empty()) << what;
                ASSERT_TRUE(hr == DISP_E_BADPARAMCOUNT || hr == DISP_E_TYPEMISMATCH ||
                            hr == DISP_E_NONAMEDARGS)
                    << what << ", answer " << hr;
                ASSERT_TRUE(listened) << what;
                ++refused;
            }
            SysFreeString(exception.bstrDescription);
            SysFreeString(exception.bstrSource);
        }
    }
    // Both ways are taken, and nothing is left.
    EXPECT_GT(delivered, refused / 100);
    EXPECT_GT(refused, 0);
    object->AddRef();
    EXPECT_EQ(1u, object->Release());
    sink->SetBrowser(nullptr);
    EXPECT_EQ(0u, browser->connections->Sinks());
}

}  // namespace

}  // namespace kestrelguard
