// Owner-drawn rows: their size and their painting, pixel by pixel.

#include "ui/menu_rows.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

#include "base/gui_owners.h"
#include "desktop/canvas.h"
#include "desktop/control_stand_in.h"
#include "desktop/usage.h"

namespace morvane::test {
namespace {

constexpr COLORREF Green = 0x004AA316;
constexpr COLORREF Blue = 0x00B46325;
constexpr UINT Unset = 4711;

constexpr std::size_t WarmUp = 20;
constexpr std::size_t Rounds = 1'000;

constexpr PinState AllStates[] = {PinState::NotPinned, PinState::Pinned,
                                  PinState::PinnedWithMinSize};

int MarkColumn() {
    return GetSystemMetrics(SM_CXMENUCHECK);
}

Font FontOf(PinState state) {
    LOGFONTW font{};
    GetObjectW(GetStockObject(DEFAULT_GUI_FONT), sizeof(font), &font);
    font.lfWeight = state == PinState::NotPinned ? font.lfWeight : 700;
    return Font(CreateFontIndirectW(&font));
}

SIZE TextSize(const std::wstring& text, PinState state) {
    const Canvas canvas(1, 1);
    const Font font = FontOf(state);
    const SelectGuard selected(canvas.Context(), font.get());
    SIZE size{};
    GetTextExtentPoint32W(canvas.Context(), text.c_str(), static_cast<int>(text.size()), &size);
    return size;
}

class RowsTest : public testing::Test {
protected:
    void SetUp() override {
        ClearMenuRows();
        menu_.reset(CreatePopupMenu());
        ASSERT_TRUE(menu_);
    }
    void TearDown() override { ClearMenuRows(); }

    // Appends a row and returns its item data.
    ULONG_PTR Row(const std::wstring& text, PinState state) {
        AppendPinItem(menu_.get(), 2500 + rows_, text, state);
        return ++rows_;
    }

    // What is left unset if the item is not to be measured.
    MEASUREITEMSTRUCT Measured(ULONG_PTR itemData, bool handled, UINT controlType = ODT_MENU) {
        return MeasuredFor(control_.Get(), itemData, handled, controlType);
    }
    static MEASUREITEMSTRUCT MeasuredFor(HWND control, ULONG_PTR itemData, bool handled,
                                         UINT controlType = ODT_MENU) {
        MEASUREITEMSTRUCT measure{};
        measure.CtlType = controlType;
        measure.itemData = itemData;
        measure.itemWidth = Unset;
        measure.itemHeight = Unset;
        EXPECT_EQ(MeasurePinItem(control, measure), handled) << itemData;
        EXPECT_EQ(measure.itemWidth != Unset, handled) << itemData;
        EXPECT_EQ(measure.itemHeight != Unset, handled) << itemData;
        return measure;
    }

    [[nodiscard]] static bool Draw(const Canvas& canvas, const RECT& item, ULONG_PTR itemData,
                                   UINT state = 0, UINT controlType = ODT_MENU) {
        DRAWITEMSTRUCT draw{};
        draw.CtlType = controlType;
        draw.itemState = state;
        draw.hDC = canvas.Context();
        draw.rcItem = item;
        draw.itemData = itemData;
        return DrawPinItem(draw);
    }

private:
    ControlStandIn control_;
    Menu menu_;
    UINT rows_ = 0;
};

TEST_F(RowsTest, SizeIsTheTextPlusMarkColumnAndPadding) {
    struct Case {
        std::wstring text;
        std::wstring shown;
    };
    const std::wstring widest(80, L'W');
    const Case cases[] = {
        {L"", L""},
        {L"W", L"W"},
        {L"Alpha - Beta (300 x 200)", L"Alpha - Beta (300 x 200)"},
        {L"a & b", L"a & b"},
        {L"a\tb\x65E5\x672C", L"a\tb\x65E5\x672C"},
        {widest, widest},
        {std::wstring(200, L'm'), std::wstring(77, L'm') + L"..."},
    };
    ASSERT_LT(TextSize(widest, PinState::NotPinned).cx, TextSize(widest, PinState::Pinned).cx)
        << "the bold font is told by its width";
    for (const auto& [text, shown] : cases) {
        for (const PinState state : AllStates) {
            const MEASUREITEMSTRUCT measure = Measured(Row(text, state), true);
            const SIZE size = TextSize(shown, state);
            EXPECT_EQ(measure.itemWidth, static_cast<UINT>(MarkColumn() + size.cx + 8)) << text;
            EXPECT_EQ(measure.itemHeight, static_cast<UINT>(size.cy + 4)) << text;
        }
    }
}

TEST_F(RowsTest, OtherItemsAreNeitherMeasuredNorDrawn) {
    struct Case {
        const char* name;
        ULONG_PTR itemData;
        UINT controlType;
    };
    static_cast<void>(Row(L"one", PinState::Pinned));
    static_cast<void>(Row(L"two", PinState::Pinned));
    const Case cases[] = {
        {"item data 0", 0, ODT_MENU},
        {"behind the last", 3, ODT_MENU},
        {"largest", std::numeric_limits<ULONG_PTR>::max(), ODT_MENU},
        {"a list box", 1, ODT_LISTBOX},
        {"a combo box", 1, ODT_COMBOBOX},
        {"a button", 1, ODT_BUTTON},
        {"a static control", 1, ODT_STATIC},
        {"nothing", 1, 0},
    };
    for (const Case& item : cases) {
        SCOPED_TRACE(item.name);
        Measured(item.itemData, false, item.controlType);
        const Canvas canvas(40, 20);
        EXPECT_FALSE(Draw(canvas, {0, 0, 40, 20}, item.itemData, 0, item.controlType));
        EXPECT_EQ(canvas.PointsOf(Canvas::Untouched).size(), 800U);
    }
    Measured(1, true);
    Measured(2, true);
    ClearMenuRows();
    Measured(1, false);
}

TEST_F(RowsTest, NothingIsMeasuredForAControlWindowThatIsGone) {
    MeasuredFor(reinterpret_cast<HWND>(INT_PTR{0x7FFE}), Row(L"one", PinState::Pinned), false);
}

TEST_F(RowsTest, BackgroundFillsTheItemAndNothingElse) {
    const RECT item{5, 3, 95, 23};
    for (const PinState state : AllStates) {
        const ULONG_PTR row = Row(L"", state);
        for (const bool selected : {false, true}) {
            const Canvas canvas(100, 30);
            ASSERT_TRUE(Draw(canvas, item, row, selected ? UINT{ODS_SELECTED} : 0U));
            const COLORREF colour = GetSysColor(selected ? COLOR_HIGHLIGHT : COLOR_MENU);
            EXPECT_EQ(canvas.PointsOf(Canvas::Untouched).size(), 100U * 30U - 90U * 20U);
            EXPECT_EQ(canvas.At(5, 3), colour);
            EXPECT_EQ(canvas.At(94, 22), colour);
            if (state == PinState::NotPinned) {
                EXPECT_EQ(canvas.PointsOf(colour).size(), 90U * 20U) << "no mark";
            }
        }
    }
}

TEST_F(RowsTest, ArrowIsDrawnPointByPoint) {
    // Relative to the centre of the mark column, row by row.
    const Canvas::Points figure = {
        {0, -5},                                       //
        {-1, -4}, {0, -4}, {1, -4},                    //
        {-1, -3}, {0, -3}, {1, -3},                    //
        {-2, -2}, {0, -2},                             //
        {-5, -1}, {0, -1},                             //
        {-5, 0},  {-5, 1}, {-5, 2},                    //
        {-5, 3},  {-4, 3}, {-3, 3}, {-2, 3}, {-1, 3},  //
        {0, 3},   {1, 3},  {2, 3},  {3, 3},  {4, 3},
    };
    const ULONG_PTR row = Row(L"", PinState::PinnedWithMinSize);
    for (const RECT& item : {RECT{0, 0, 100, 20}, RECT{7, 4, 60, 25}, RECT{3, 5, 90, 22}}) {
        for (const UINT state : {UINT{0}, UINT{ODS_SELECTED}}) {
            const Canvas canvas(100, 30);
            ASSERT_TRUE(Draw(canvas, item, row, state));
            const POINT centre = {item.left + MarkColumn() / 2, (item.top + item.bottom) / 2};
            EXPECT_EQ(canvas.PointsOf(Blue, centre), figure);
            EXPECT_TRUE(canvas.PointsOf(Green).empty());
        }
    }
}

TEST_F(RowsTest, CheckMarkIsTheGreenMarlettGlyphCentredInTheMarkColumn) {
    const RECT item{7, 4, 80, 25};
    const ULONG_PTR row = Row(L"", PinState::Pinned);
    const Canvas expected(100, 30);
    const HDC dc = expected.Context();
    FillRect(dc, &item, GetSysColorBrush(COLOR_MENU));
    const Font font(CreateFontW(-MulDiv(10, GetDeviceCaps(dc, LOGPIXELSY), 72), 0, 0, 0, 400, 0, 0,
                                0, SYMBOL_CHARSET, 0, 0, 0, 0, L"Marlett"));
    const SelectGuard selected(dc, font.get());
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, Green);
    RECT column{item.left, item.top, item.left + MarkColumn(), item.bottom};
    DrawTextW(dc, L"a", 1, &column, DT_CENTER | DT_VCENTER | DT_SINGLELINE);

    const Canvas drawn(100, 30);
    ASSERT_TRUE(Draw(drawn, item, row));
    EXPECT_EQ(drawn.Pixels(), expected.Pixels());
    EXPECT_GE(drawn.PointsOf(Green).size(), 3U);
    EXPECT_TRUE(drawn.PointsOf(Blue).empty());
    for (const auto& [x, y] : drawn.PointsOf(Green)) {
        EXPECT_TRUE(x >= 7 && x < 7 + MarkColumn()) << x << ", " << y;
    }
}

TEST_F(RowsTest, TextIsDrawnBesideTheMarkColumn) {
    const std::wstring texts[] = {L"Alpha - Beta", L"a && b &c", L"M\xD83D\xDE00i",
                                  L"wide text that does not fit into the narrow item"};
    const RECT items[] = {{4, 2, 196, 24}, {0, 0, 120, 19}};
    for (const std::wstring& text : texts) {
        for (const PinState state : AllStates) {
            const ULONG_PTR row = Row(text, state);
            for (const RECT& item : items) {
                for (const bool selected : {false, true}) {
                    const Canvas drawn(200, 26);
                    ASSERT_TRUE(Draw(drawn, item, row, selected ? UINT{ODS_SELECTED} : 0U));
                    const Canvas expected(200, 26);
                    const HDC dc = expected.Context();
                    FillRect(dc, &item, GetSysColorBrush(selected ? COLOR_HIGHLIGHT : COLOR_MENU));
                    const Font font = FontOf(state);
                    const SelectGuard guard(dc, font.get());
                    SetBkMode(dc, TRANSPARENT);
                    SetTextColor(dc, GetSysColor(selected ? COLOR_HIGHLIGHTTEXT : COLOR_MENUTEXT));
                    RECT area = item;
                    area.left += MarkColumn();
                    DrawTextW(dc, text.c_str(), -1, &area, 0x8024);
                    // Other tests judge the mark.
                    const RECT column{item.left, item.top, area.left, item.bottom};
                    for (const Canvas* const canvas : {&drawn, &expected}) {
                        FillRect(canvas->Context(), &column, GetSysColorBrush(COLOR_MENU));
                    }
                    EXPECT_EQ(drawn.Pixels(), expected.Pixels()) << text;
                }
            }
        }
    }
}

TEST_F(RowsTest, DrawingRestoresTheFontAndPenOfTheContext) {
    for (const PinState state : AllStates) {
        const Canvas canvas(100, 30);
        const HDC dc = canvas.Context();
        const HGDIOBJ font = GetCurrentObject(dc, OBJ_FONT);
        const HGDIOBJ pen = GetCurrentObject(dc, OBJ_PEN);
        const HGDIOBJ brush = GetCurrentObject(dc, OBJ_BRUSH);
        ASSERT_TRUE(Draw(canvas, {0, 0, 100, 30}, Row(L"Alpha", state)));
        EXPECT_EQ(GetCurrentObject(dc, OBJ_FONT), font);
        EXPECT_EQ(GetCurrentObject(dc, OBJ_PEN), pen);
        EXPECT_EQ(GetCurrentObject(dc, OBJ_BRUSH), brush);
    }
}

TEST_F(RowsTest, MeasuringAndDrawingLeakNothing) {
    const Canvas canvas(60, 20);
    const ULONG_PTR rows[] = {Row(L"a", PinState::NotPinned), Row(L"b", PinState::Pinned),
                              Row(L"c", PinState::PinnedWithMinSize)};
    const auto show = [&](std::size_t times) {
        for (std::size_t time = 0; time < times; ++time) {
            for (const ULONG_PTR row : rows) {
                Measured(row, true);
                ASSERT_TRUE(Draw(canvas, {0, 0, 60, 20}, row));
            }
        }
    };
    show(WarmUp);
    const Usage before = MeasureUsage();
    show(Rounds);
    ExpectNothingLeft("rows drawn " + std::to_string(Rounds) + " times", before, MeasureUsage());
}

}  // namespace
}  // namespace morvane::test
