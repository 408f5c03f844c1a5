#include "src/model/accounts.h"

#include <gtest/gtest.h>
#include <string>

using namespace vark;

TEST(AccountKinds, AreFoundByEachOfTheirNumbers)
{
    for (const AccountKind &kind : accountKinds) {
        EXPECT_EQ(&kind, FindKind(kind.Art)) << kind.One;
        EXPECT_EQ(&kind, &KindOfTable(kind.Table)) << kind.One;
    }
    EXPECT_EQ(TableSako, FindKind(1)->Table);
    EXPECT_EQ(TableKred, FindKind(2)->Table);
    EXPECT_EQ(TableDebi, FindKind(4)->Table);
    EXPECT_EQ(TableKore, FindKind(8)->Table);
    for (const int32_t other : {-1, 0, 3, 5, 16}) {
        EXPECT_EQ(nullptr, FindKind(other)) << other;
    }
    EXPECT_EQ(TableSako, KindOfTable(TableBube).Table) << "a table without accounts";
}

TEST(AccountKinds, OnlyPersonalAccountsHaveOpenItems)
{
    EXPECT_EQ(nullptr, FindPersonalKind(1));
    EXPECT_EQ(TableOpkred, FindPersonalKind(2)->OpenItems);
    EXPECT_EQ(TableOpdebi, FindPersonalKind(4)->OpenItems);
    EXPECT_EQ(nullptr, FindPersonalKind(8));
    EXPECT_EQ(nullptr, FindPersonalKind(16));
}

TEST(AccountKinds, HaveAnotherNumberInsideOfAPosting)
{
    EXPECT_EQ(TableSako, FindKindOfBuchung(2)->Table);
    EXPECT_EQ(TableKred, FindKindOfBuchung(4)->Table);
    EXPECT_EQ(TableDebi, FindKindOfBuchung(8)->Table);
    EXPECT_EQ(nullptr, FindKindOfBuchung(0)) << "no posting names a Kostenstelle";
    EXPECT_EQ(nullptr, FindKindOfBuchung(1));
}

TEST(AccountKinds, TellWhereNameAndSumsLie)
{
    AnyAccount record{};
    EXPECT_EQ(70u, FindKind(1)->NameOffset);
    EXPECT_EQ(68u, FindKind(2)->NameOffset);
    EXPECT_EQ(68u, FindKind(4)->NameOffset);
    EXPECT_EQ(21u, FindKind(8)->NameOffset);
    EXPECT_EQ(record.Bytes + 127, reinterpret_cast<const char *>(&SumsOf(*FindKind(1), record)));
    EXPECT_EQ(record.Bytes + 208, reinterpret_cast<const char *>(&SumsOf(*FindKind(2), record)));
    EXPECT_EQ(record.Bytes + 208, reinterpret_cast<const char *>(&SumsOf(*FindKind(4), record)));
}
