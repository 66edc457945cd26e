#include "Schema.h"

namespace zq::schema {

namespace {

using T = Type;

// Text sizes are the entry limits of the screens, so that a cut on save matches what can be typed.
Column text(const char* name, int size) {
    return {QString::fromUtf8(name), T::Text, size};
}
Column col(const char* name, T type) {
    return {QString::fromUtf8(name), type, 0};
}

// The columns every sub-record of a person starts with: the person and the row's place in its grid.
QVector<Column> subRecord(std::initializer_list<Column> business) {
    QVector<Column> c = {text("fCode", 10), col("fOrderID", T::SmallInt)};
    for (const Column& b : business)
        c << b;
    return c;
}

// The person master row. The first 52 columns are addressed by ordinal on the record screen, so their
// order is fixed; the spouse columns at the end are what the one-time split copies out.
Table personTable() {
    return {"tRsBasic",
            {
                text("fCode", 10),
                text("fName", 10),
                text("fSex", 4),
                col("fBirthDay", T::Date),
                text("fMz", 16),
                text("fHy", 10),
                text("fHj", 20),
                text("fSfz", 20),
                text("fJg", 20),
                text("fZz", 28),
                text("fXzz", 40),
                text("fygxz", 20),
                text("fPhone", 20),
                text("fXl", 20),
                text("fZy", 20),
                text("fXx", 45),
                text("fWy", 20),
                text("fWySp", 20),
                text("fZc", 20),
                text("fZcDay", 20),
                text("fRz", 30),
                text("fTc", 45),
                text("fother1", 30),
                text("fother2", 20),
                text("fGzName", 20),
                col("fSpday", T::Date),
                text("fBmName", 20),
                text("idlimt", 10),
                text("bodycondition", 20),
                text("staycode", 20),
                text("staytime", 10),
                text("contracttime", 20),
                text("contractlimt", 30),
                text("fBp", 20),
                text("mobilephone", 30),
                text("grudtime", 30),
                text("worktime", 30),
                text("funit", 30),
                text("leavetime", 30),
                text("leavereason", 30),
                text("worklimt", 30),
                text("roadmny", 20),
                text("seepnt", 20),
                text("safeedu", 30),
                text("lyunit", 40),
                text("trustman", 30),
                text("bodyhigh", 10),
                text("bodytype", 20),
                text("neckline", 20),
                text("waistline", 20),
                text("shoecode", 20),
                text("unit", 40),
                // Behind the screen's 52.
                text("fBmCode", 15),
                col("fzt", T::SmallInt),
                col("fphoto", T::Blob),
                text("fGzCode", 20),
                text("fKqCardID", 20),
                // Spouse, in the order the split selects them.
                text("fpName", 10),
                col("fpBirthday", T::Date),
                text("fpZz", 10),
                text("fpMz", 20),
                text("fpHj", 20),
                text("fpJg", 40),
                text("fpPhone", 20),
                text("fpXl", 20),
                text("fpRz", 20),
                text("fpDw", 60),
            },
            // The browser filters by state and department prefix, the trees count the same way, the
            // housing screen by room prefix; names and identity cards are looked up on their own.
            {{"fzt", "fBmCode"}, {"fBmCode"}, {"fName"}, {"fSfz"}, {"neckline"}}};
}

// A code table: the tree lies in the text of fCode.
QVector<Column> codeTree(std::initializer_list<Column> more) {
    QVector<Column> c = {text("fCode", 15), text("fName", 20)};
    for (const Column& m : more)
        c << m;
    return c;
}

QVector<Table> build() {
    QVector<Table> t;
    t << Table{"myCompany",
               {text("CompCode", 20), text("FullName", 100), text("CompName", 100), text("compadd", 100),
                text("Province", 30), text("cityname", 30), text("Telphone", 50), text("fax", 50),
                text("PostCode", 10), text("http", 100), text("E_Mail", 100), text("CompTax", 50),
                text("CompAcnt", 50)},
               {}};
    t << Table{"tSysFunc",
               {col("SerialNo", T::Int), text("Model_Name", 30), text("Model_Name_0", 40),
                text("Model_Name_1", 40), col("SecondPass", T::SmallInt), text("Password", 20),
                col("NoUse_", T::SmallInt)},
               {{"Model_Name"}}};
    t << Table{"RptListDetail",
               {text("fTable", 30), col("FieldID", T::SmallInt), col("OrderID", T::Int),
                text("FieldName", 30), text("FieldName_0", 40), text("FieldName_1", 40),
                col("FieldSelected", T::SmallInt), col("FieldSeek", T::SmallInt),
                col("FieldType", T::SmallInt), text("FieldBriefType", 8), col("FieldGridWidth", T::Real),
                col("FieldDataType", T::SmallInt), col("FieldDataDeci", T::SmallInt),
                col("FEnabled", T::SmallInt)},
               {{"fTable", "FieldName"}}};
    // The lists themselves, and their entries.
    t << Table{"brief", {text("briefType", 8), text("BriefName", 40)}, {{"briefType"}}};
    t << Table{"briefDetail",
               {text("briefType", 8), text("BriefCode", 10), text("BriefName", 40)},
               {{"briefType", "BriefCode"}}};
    t << Table{
        "tRs_Bm",
        codeTree({col("fLimited", T::Real), col("fColor", T::Int), col("fYnxj", T::SmallInt), text("fRz", 20),
                  text("fgzname", 20), col("fDetail1", T::Memo), col("fDetail2", T::Memo)}),
        {{"fName"}}};
    t << personTable();
    t << Table{
        "tRsFamily",
        subRecord({text("fCh", 10), text("fName", 10), text("fNy", 12), text("fDw", 60), text("fZz", 10)}),
        {}};
    t << Table{"tRsStudy",
               subRecord({text("fYear", 30), text("fXx", 40), text("fZy", 20), col("fType", T::SmallInt)}),
               {}};
    t << Table{"tRsWork",
               subRecord({text("fYear", 30), text("fBm", 60), text("fRz", 20), text("fWk", 40),
                          text("newbm", 30), col("fType", T::SmallInt)}),
               {}};
    t << Table{"tRs_WorkState",
               subRecord({text("fYear", 30), text("YTotal", 20), text("Ydays", 20), text("ADay", 20)}),
               {}};
    t << Table{"tRsResult", subRecord({text("fYear", 30), text("fyj", 60)}), {}};
    t << Table{
        "tRsTech", subRecord({text("fJs", 60), text("fJn", 20), text("fBz", 20), text("fSm", 20)}), {}};
    t << Table{"tRsMeed", subRecord({text("fYear", 30), text("fYy", 60), text("fjc", 20)}), {}};
    t << Table{
        "tRsRemark", {text("fcode", 10), col("fYear", T::Int), col("fpy", T::Memo), text("fpdr", 20)}, {}};
    t << Table{"tRsDetail",
               {text("fCode", 10), text("fRsDetail1", 500), text("fRsDetail2", 500), text("fRsDetail3", 500),
                text("fRsDetail4", 500)},
               {}};
    // Columns in the order of the order list's grid.
    t << Table{"trsPersonMove",
               {text("fcode", 10), text("fName", 10), col("moveNmb", T::Real), text("oldunit", 30),
                text("olddpt", 20), text("worktype", 20), text("newunit", 30), text("newdpt", 20),
                text("newworktype", 20), text("chgperson", 10), text("wrtperson", 10),
                col("wrtdate", T::Date)},
               {{"moveNmb"}}};
    for (const char* loans : {"trsLoanTools", "tRsLoanGoods"})
        t << Table{loans,
                   {col("fID", T::AutoId), text("fcode", 10), text("fName", 12), text("goodsname", 50),
                    text("Model", 50), col("geshu", T::Real), col("price", T::Real), col("Total", T::Real),
                    col("useyear", T::Real), text("lyxz", 20), col("loantime", T::Date),
                    col("backtime", T::Date), text("demo", 50)},
                   {}};
    t << Table{"trsCard",
               {text("fcode", 10), text("fName", 10), text("cardname", 30), text("cardcode", 20),
                text("cardjg", 30), col("cardtime", T::Date), col("usetime", T::Date), text("fyxz", 20),
                col("pxfy", T::Real)},
               {{"cardcode"}}};
    t << Table{"tRs_House",
               codeTree({col("fLimited", T::Real), col("fColor", T::Int), col("fYnxj", T::SmallInt),
                         col("fDetail1", T::Memo)}),
               {{"fName"}}};
    t << Table{"tRs_RptFlow",
               {col("fID", T::Int),
                col("fDate", T::Date),
                text("fTitle", 40),
                col("fContent", T::Memo),
                text("fFootnote1", 40),
                text("fFootnote2", 200),
                text("fChecker1", 40),
                text("fChecker2", 40),
                text("fChecker3", 40),
                text("fChecker4", 40),
                col("fChecker1Ok", T::SmallInt),
                col("fChecker2Ok", T::SmallInt),
                col("fChecker3Ok", T::SmallInt),
                col("fChecker4Ok", T::SmallInt),
                text("fFilePath", 255),
                col("fNews", T::SmallInt),
                text("fBmName", 20),
                text("fChecker1_", 100),
                text("fChecker2_", 100),
                text("fChecker3_", 100),
                text("fChecker4_", 100)},
               {{"fID"}, {"fDate"}}};
    t << Table{"tRs_meeting",
               {col("fID", T::Int), col("fDate", T::Date), text("fTitle", 40), col("fContent", T::Memo),
                text("fFoot1", 10), text("fFoot2", 10), text("fFootnote1", 40), text("fFootnote2", 40),
                text("fFilePath", 255), col("fNews", T::SmallInt), text("fBmName", 20)},
               {{"fID"}, {"fDate"}}};
    // fPosted: when the notice was posted, to the millisecond, for the count of unread notices.
    t << Table{"tRs_News",
               {col("fID", T::Int), col("fDate", T::Date), col("fContent", T::Memo), text("fBmName", 20),
                text("fPosted", 23), text("fPoster", 20)},
               {{"fID"}, {"fDate"}}};
    // When each user last opened the notice board.
    t << Table{"tRs_NewsSeen", {text("fUser", 20), text("fOpened", 23)}, {{"fUser"}}};
    // The change history, written by the database's triggers (SchemaHistory.cpp): one row a changed
    // column. fCode is the person, or the department for tRs_Bm; fBmCode the department the change
    // belongs to; fRow the row within the person's records; fOp 1 added, 2 changed, 3 deleted;
    // fKind what the company report counts it as (0 none).
    t << Table{"tRsHistory",
               {col("fId", T::AutoId), col("fWhen", T::DateTime), text("fUser", 20), text("fHost", 60),
                text("fTable", 20), text("fCode", 15), text("fBmCode", 15), col("fRow", T::Int),
                text("fField", 30), col("fBefore", T::Memo), col("fAfter", T::Memo), col("fOp", T::SmallInt),
                col("fKind", T::SmallInt)},
               {{"fWhen", "fKind"}}};
    t << Table{"tWd_File1",
               codeTree({col("fYnxj", T::SmallInt), col("fBz", T::SmallInt), text("fFilePath", 255),
                         text("fBmCode", 15), col("fDetail1", T::Memo), col("fLimited", T::Real)}),
               {{"fName"}, {"fBmCode"}}};
    t << Table{"tWd_File0",
               codeTree({col("fYnxj", T::SmallInt), col("fLimited", T::Real), col("fColor", T::Int),
                         col("fDetail1", T::Memo)}),
               {{"fName"}}};
    return t;
}

} // namespace

const QVector<Table>& tables() {
    static const QVector<Table> t = build();
    return t;
}

} // namespace zq::schema
