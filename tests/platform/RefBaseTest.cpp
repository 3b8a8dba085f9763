#include <utils/RefBase.h>

#include <thread>

#include "TestSupport.h"

using android::RefBase;
using android::sp;
using android::wp;

namespace {

constexpr int kAlive = 0x600d;

struct Counted : RefBase {
    explicit Counted(std::atomic<int>* ended) : ended(ended) {}
    Counted(const Counted& other) : RefBase(), ended(other.ended) {}
    ~Counted() override {
        state = 0;
        ended->fetch_add(1);
    }
    std::atomic<int>* ended;
    int state = kAlive;
};

}  // namespace

TEST(RefBase, WeakPromotionRacingWithLastRelease_GivesTheLiveObjectOrNull) {
    constexpr int kRounds = 40;
    constexpr size_t kObjects = 200;
    constexpr int kThreads = 3;
    std::atomic<int> ended{0};
    std::atomic<int> bad{0};
    for (int round = 0; round < kRounds; ++round) {
        std::vector<sp<Counted>> strong;
        for (size_t i = 0; i < kObjects; ++i)
            strong.push_back(new Counted(&ended));
        const std::vector<wp<Counted>> weak(strong.begin(), strong.end());

        std::atomic<int> running{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&] {
                running.fetch_add(1);
                // Each object is promoted until it is gone, all the while the owner lets go of
                // them.
                for (const wp<Counted>& one : weak) {
                    while (sp<Counted> object = one.promote()) {
                        if (object->state != kAlive) bad.fetch_add(1);
                    }
                }
            });
        }
        while (running.load() < kThreads)
            std::this_thread::yield();
        for (sp<Counted>& one : strong)
            one.clear();
        for (auto& thread : threads)
            thread.join();
        ASSERT_EQ(ended.load(), static_cast<int>(kObjects) * (round + 1));
    }
    EXPECT_EQ(bad.load(), 0);
}

TEST(RefBase, StrongReferencesCopiedByManyThreads_DeleteOnce) {
    std::atomic<int> ended{0};
    sp<Counted> object = new Counted(&ended);
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([own = object] {
            for (int i = 0; i < 20000; ++i) {
                sp<Counted> copy = own;
                wp<Counted> weak = copy;
                copy.clear();
                if (weak.promote() != own) abort();
            }
        });
    }
    object.clear();
    for (auto& thread : threads)
        thread.join();
    threads.clear();
    EXPECT_EQ(ended.load(), 1);
}

TEST(RefBase, ObjectWithoutStrongReference_LivesOnTheStackAndLeavesWeakOnesEmpty) {
    std::atomic<int> ended{0};
    wp<Counted> weak;
    {
        Counted onStack(&ended);
        Counted copy(onStack);
        weak = &copy;
        EXPECT_EQ(copy.getStrongCount(), 0);
    }
    EXPECT_EQ(ended.load(), 2);
    EXPECT_EQ(weak.promote(), nullptr);

    weak = new Counted(&ended);
    EXPECT_NE(weak.promote(), nullptr) << "the first strong reference may come from a weak one";
    EXPECT_EQ(ended.load(), 3);
}

TEST(RefBase, PointerLetGo_IsAlreadyNullWhenTheDestructorRuns) {
    struct Looker : RefBase {
        explicit Looker(sp<Looker>* holder) : holder(holder) {}
        ~Looker() override { EXPECT_EQ(holder->get(), nullptr); }
        sp<Looker>* holder;
    };
    sp<Looker> holder;
    holder = new Looker(&holder);
    holder.clear();
    holder = new Looker(&holder);
    holder = nullptr;
}

TEST(RefBase, Pointers_FollowAssignmentMoveAndBaseClass) {
    std::atomic<int> ended{0};
    sp<Counted> first = new Counted(&ended);
    sp<RefBase> base = first;
    sp<Counted>& alias = first;
    first = alias;
    EXPECT_EQ(base, first);
    EXPECT_EQ(first->getStrongCount(), 2);
    sp<Counted> second = std::move(first);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(second->getStrongCount(), 2);

    wp<Counted> weak = second;
    wp<RefBase> weakBase = weak;
    base.clear();
    second = new Counted(&ended);
    EXPECT_EQ(ended.load(), 1);
    EXPECT_EQ(weakBase.promote(), nullptr);
    EXPECT_NE(weak, wp<Counted>(second));
    second = std::move(first);
    EXPECT_EQ(ended.load(), 2);
}

TEST(RefBaseDeathTest, BrokenOwnership_Aborts) {
    static std::atomic<int> ended{0};
    EXPECT_DEATH(
            {
                Counted onStack(&ended);
                onStack.incStrong(nullptr);
            },
            "destroyed with 1 strong references");
    EXPECT_DEATH(
            {
                Counted onStack(&ended);
                onStack.decStrong(nullptr);
            },
            "released twice");
}
