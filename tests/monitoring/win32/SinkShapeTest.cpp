#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "SinkFixture.h"

namespace kestrelguard {

using namespace fakes;

namespace {

struct Shape {
    DISPID id;
    UINT count;
};
constexpr Shape kShapes[] = {{250, 7}, {259, 2}, {106, 0}, {104, 0}, {270, 1}, {252, 2},
                             {251, 2}, {258, 1}, {108, 2}, {113, 1}, {263, 2}};

class SinkShapeTest : public SinkTest, public testing::WithParamInterface<Shape> {};

TEST_P(SinkShapeTest, WrongCountsAreRefusedWithoutACall) {
    const auto events = browser->connections->Sink();
    const UINT most = GetParam().count + (GetParam().id == 270 ? 1 : 0);
    for (UINT count = 0; count <= 9; ++count) {
        if (count >= GetParam().count && count <= most) {
            continue;
        }
        std::vector<VARIANT> values(count, Of(VT_EMPTY));
        DISPPARAMS params{};
        params.cArgs = count;
        params.rgvarg = values.data();
        EXPECT_EQ(DISP_E_BADPARAMCOUNT, events->Invoke(GetParam().id, IID_NULL, 0, DISPATCH_METHOD, &params,
                                                       nullptr, nullptr, nullptr))
            << count;
    }
    EXPECT_TRUE(receiver->calls.empty());
}

TEST_P(SinkShapeTest, NamedArgumentsAreRefused) {
    const auto events = browser->connections->Sink();
    std::vector<VARIANT> values(GetParam().count + 1, Of(VT_EMPTY));
    DISPID name = 0;
    DISPPARAMS params{};
    params.cArgs = GetParam().count;
    params.rgvarg = values.data();
    params.cNamedArgs = 1;
    params.rgdispidNamedArgs = &name;
    EXPECT_EQ(DISP_E_NONAMEDARGS, events->Invoke(GetParam().id, IID_NULL, 0, DISPATCH_METHOD, &params,
                                                 nullptr, nullptr, nullptr));
    EXPECT_TRUE(receiver->calls.empty());
}

TEST_P(SinkShapeTest, AMissingArgumentListIsRefused) {
    const auto events = browser->connections->Sink();
    DISPPARAMS params{};
    params.cArgs = GetParam().count;
    EXPECT_EQ(
        GetParam().count == 0 ? S_OK : DISP_E_BADPARAMCOUNT,
        events->Invoke(GetParam().id, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr));
}

// Any mix of types in any place: never a crash, and a call only with what has the event's shape.
TEST_P(SinkShapeTest, AnyTypesAreSurvived) {
    const auto events = browser->connections->Sink();
    VARIANT loop = Of(VT_BYREF | VT_VARIANT);
    loop.pvarVal = &loop;
    VARIANT toNull = Ref(nullptr);
    VARIANT inner = Of(VT_EMPTY);
    VARIANT referredBool = Bool(true);
    VARIANT referredObject = Object(nullptr);
    const Bstr text(L"text");
    BSTR textRef = text.Get();
    VARIANT byRefText = Of(VT_BYREF | VT_BSTR);
    byRefText.pbstrVal = &textRef;
    VARIANT nullText = Of(VT_BYREF | VT_BSTR);
    VARIANT vector = Of(VT_VECTOR | VT_I4);
    VARIANT array = Of(VT_ARRAY | VT_UI1);
    VARIANT nullArray = Of(VT_BYREF | VT_ARRAY | VT_UI1);
    VARIANT unknown = Of(VT_UNKNOWN);
    VARIANT error = Of(VT_ERROR);
    VARIANT strange = Of(999);
    VARIANT nullBool = BoolRef(nullptr);
    VARIANT nullObject = ObjectRef(nullptr);
    const std::vector<VARIANT> odd = {Of(VT_EMPTY),
                                      Of(VT_NULL),
                                      loop,
                                      Ref(&loop),
                                      toNull,
                                      Ref(&toNull),
                                      Ref(&inner),
                                      Ref(&referredBool),
                                      Ref(&referredObject),
                                      byRefText,
                                      nullText,
                                      vector,
                                      array,
                                      nullArray,
                                      unknown,
                                      error,
                                      strange,
                                      nullBool,
                                      nullObject,
                                      Text(text.Get()),
                                      Long(1),
                                      Bool(true),
                                      Object(frame.Get()),
                                      Text(nullptr)};
    const UINT count = GetParam().count;
    for (std::size_t base = 0; base < odd.size(); ++base) {
        for (std::size_t other = 0; other < odd.size(); ++other) {
            for (UINT place = 0; place < count; ++place) {
                std::vector<VARIANT> values(count, odd[base]);
                values[place] = odd[other];
                DISPPARAMS params{};
                params.cArgs = count;
                params.rgvarg = values.data();
                UINT bad = 99;
                receiver->calls.clear();
                const HRESULT answer = events->Invoke(GetParam().id, IID_NULL, 0, DISPATCH_METHOD, &params,
                                                      nullptr, nullptr, &bad);
                if (answer == S_OK) {
                    EXPECT_EQ(2U, receiver->calls.size());
                    for (const void* pointer : receiver->pointers) {
                        // Objects and texts may be null, references may not.
                        if (GetParam().id == 250 || GetParam().id == 251) {
                            EXPECT_TRUE(pointer != nullptr || pointer == receiver->pointers[0]);
                        }
                    }
                } else {
                    EXPECT_EQ(DISP_E_TYPEMISMATCH, answer);
                    EXPECT_LT(bad, count);
                    EXPECT_TRUE(receiver->calls.empty());
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Events, SinkShapeTest, testing::ValuesIn(kShapes),
                         [](const auto& shape) { return "Id" + std::to_string(shape.param.id); });

TEST_F(SinkTest, TheBadArgumentIsNamedByItsPlaceInTheList) {
    const auto events = browser->connections->Sink();
    Arguments arguments{Object(frame.Get()), Ref(&url),     Ref(&flags),     Ref(nullptr),
                        Ref(&post),          Ref(&headers), BoolRef(&cancel)};
    DISPPARAMS params = arguments.Get();
    UINT bad = 99;
    EXPECT_EQ(DISP_E_TYPEMISMATCH,
              events->Invoke(250, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, &bad));
    EXPECT_EQ(3U, bad);
}

TEST_F(SinkTest, AValueInPlaceOfAReferenceIsTakenAsAReferenceToTheDeliveredValue) {
    const auto events = browser->connections->Sink();
    const Bstr address(L"http://a.example/");
    Arguments arguments{Object(frame.Get()), Text(address.Get())};
    DISPPARAMS params = arguments.Get();
    EXPECT_EQ(S_OK, events->Invoke(259, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr));
    EXPECT_EQ((Pointers{frame.Get(), &arguments.At(1)}), receiver->pointers);
}

TEST_F(SinkTest, PostDataByReferenceTwiceIsPassedAsDelivered) {
    VARIANT data = Of(VT_EMPTY);
    VARIANT outer = Ref(&data);
    EXPECT_EQ(S_OK, Fire(250, {Object(frame.Get()), Ref(&url), Ref(&flags), Ref(&target), Ref(&outer),
                               Ref(&headers), BoolRef(&cancel)}));
    EXPECT_EQ(&outer, receiver->pointers[4]);
}

TEST_F(SinkTest, CancelInsideAVariantIsWrittenInPlace) {
    VARIANT inside = Bool(false);
    receiver->in = [&] {
        *static_cast<VARIANT_BOOL*>(const_cast<void*>(receiver->pointers[0])) = VARIANT_TRUE;
    };
    EXPECT_EQ(S_OK, Fire(270, {Ref(&inside)}));
    EXPECT_EQ(VARIANT_TRUE, inside.boolVal);
    EXPECT_EQ(DISP_E_TYPEMISMATCH, Fire(270, {Bool(false)}));
}

TEST_F(SinkTest, NumbersOfOtherTypesAreConverted) {
    VARIANT small = Of(VT_I2);
    small.iVal = 12;
    EXPECT_EQ(S_OK, Fire(108, {small, Of(VT_EMPTY)}));
    EXPECT_EQ((std::vector<LONG>{12, 0}), receiver->numbers);
    EXPECT_EQ(S_OK, Fire(258, {Long(5)}));
    EXPECT_EQ((std::vector<LONG>{VARIANT_TRUE}), receiver->numbers);
}

}  // namespace

}  // namespace kestrelguard
