// A small Objective-C runtime for what clang compiles on Linux in the Mac's own form
// (-fobjc-runtime=macosx): classes, messages, reference counts, autorelease pools and blocks, after
// clang's documents on automatic reference counting and on blocks. It counts what lives, and ends
// the process when an object is released too often, used when it is gone, or left to a pool that is
// not there.
#include "runtime.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

namespace objective_c {

template <typename T>
struct ListOf {
    std::uint32_t entrySize, count;
    T entries[1];

    const T* begin() const { return entries; }
    const T* end() const { return entries + count; }
};
struct Method {
    const char *name, *types;
    void* function;
};
struct Description {
    std::uint32_t flags, start, size, reserved;
    const std::uint8_t* layout;
    const char* name;
    const ListOf<Method>* methods;
    const void* protocols;
    const void* ivars;
    const std::uint8_t* weakLayout;
    const void* properties;
};
struct Class {
    Class *isa, *super;
    void *cache, *vtable;
    Description* description;
};
struct Object {
    Class* isa;
};
using Id = Object*;
struct Block {
    struct Descriptor {
        unsigned long reserved, size;
        void (*copy)(void* to, const void* from);
        void (*dispose)(const void* block);
    };
    Class* isa;
    std::int32_t flags, count;
    void* function;
    const Descriptor* descriptor;
};
constexpr std::int32_t kBlockOnHeap = 1 << 24, kBlockHasHelpers = 1 << 25, kBlockGlobal = 1 << 28;

}  // namespace objective_c
using namespace objective_c;

extern "C" {
extern Class* __start_objc_classlist[];
extern Class* __stop_objc_classlist[];
void* _objc_empty_cache = nullptr;
}
extern Class constantStringClass __asm__("OBJC_CLASS_$_ConstantString");
extern Class blockClass __asm__("OBJC_CLASS_$_Block");

namespace quil::substitute {
namespace {

/// Goes before every object.
struct Header {
    std::atomic<long> count;
    std::uint64_t mark;
};
constexpr std::uint64_t kAlive = 0x51554c4f424a4543;

struct Live {
    std::mutex mutex;
    std::map<std::string, long> counts;
};
Live& live() {
    static auto& objects = *new Live;  // threads may outlive the process's end
    return objects;
}
void count(const char* name, long change) {
    const std::lock_guard guard(live().mutex);
    live().counts[name] += change;
}

void* ownMethod(const Class* type, const char* name) {
    if (!type->description->methods) return nullptr;
    for (const Method& method : *type->description->methods) {
        if (std::strcmp(method.name, name) == 0) return method.function;
    }
    return nullptr;
}

void* method(const Class* type, const char* name) {
    static thread_local std::map<std::pair<const Class*, const char*>, void*> known;
    void*& function = known[{type, name}];
    for (const Class* next = type; next && !function; next = next->super) {
        function = ownMethod(next, name);
    }
    if (!function) {
        violation(std::string(type->description->name) + " does not understand " + name);
    }
    return function;
}

/// Calls the class's own method that the compiler has made for its instance variables, if any.
void callOwn(const Class* type, const char* name, Id object) {
    void* function = ownMethod(type, name);
    if (function) reinterpret_cast<void (*)(Id, const char*)>(function)(object, name);
}

void construct(const Class* type, Id object) {
    if (!type) return;
    construct(type->super, object);
    callOwn(type, ".cxx_construct", object);
}

Header& headerOf(Id object) {
    Header& header = reinterpret_cast<Header*>(object)[-1];
    if (header.mark != kAlive) violation("use of an object that is gone");
    return header;
}

void destroy(Id object) {
    for (const Class* type = object->isa; type; type = type->super) {
        callOwn(type, ".cxx_destruct", object);
    }
    count(object->isa->description->name, -1);
    Header& header = headerOf(object);
    header.mark = 0;
    std::free(&header);
}

bool isConstant(Id object) {
    return !object || object->isa == &constantStringClass;
}

struct Pools {
    std::vector<Id> objects;
    int depth = 0;
};
thread_local Pools pools;

}  // namespace

std::map<std::string, long> liveObjects() {
    const std::lock_guard guard(live().mutex);
    auto counts = live().counts;
    std::erase_if(counts, [](const auto& entry) { return entry.second == 0; });
    return counts;
}

void noteSingleton(const void* object) {
    count(static_cast<const Object*>(object)->isa->description->name, -1);
}

void violation(const std::string& what) {
    std::fprintf(stderr, "violation: %s\n", what.c_str());
    std::abort();
}

}  // namespace quil::substitute

using namespace quil::substitute;

extern "C" {

void* quil_method(Id receiver, const char* name) {
    return method(receiver->isa, name);
}
Class* object_getClass(Id object) {
    return object->isa;
}
Class* class_getSuperclass(Class* type) {
    return type->super;
}

Id objc_msgSend(Id receiver, const char* name);
Id _Block_copy(const void* block);
void _Block_release(const void* block);

Id objc_alloc(Class* type) {
    const Class* base = type->super;
    if (base && type->description->start < base->description->size) {
        violation(std::string(type->description->name) + ": collections.h was not included");
    }
    auto* header = static_cast<Header*>(std::calloc(1, sizeof(Header) + type->description->size));
    new (header) Header{{1}, kAlive};
    const Id object = reinterpret_cast<Id>(header + 1);
    object->isa = type;
    construct(type, object);
    count(type->description->name, 1);
    return object;
}
Id objc_alloc_init(Class* type) {
    return objc_msgSend(objc_alloc(type), "init");
}
Id objc_retain(Id object) {
    if (isConstant(object)) return object;
    if (object->isa == &blockClass) return _Block_copy(object);
    headerOf(object).count.fetch_add(1);
    return object;
}
void objc_release(Id object) {
    if (isConstant(object)) return;
    if (object->isa == &blockClass) return _Block_release(object);
    if (headerOf(object).count.fetch_sub(1) == 1) destroy(object);
}
Id objc_autorelease(Id object) {
    if (isConstant(object)) return object;
    if (pools.depth == 0) {
        violation(std::string("left to no pool: ") + object->isa->description->name);
    }
    pools.objects.push_back(object);
    return object;
}
#define ALSO(name, function) Id name(Id object) __attribute__((alias(#function)))
ALSO(objc_autoreleaseReturnValue, objc_autorelease);
ALSO(objc_retainAutoreleasedReturnValue, objc_retain);
ALSO(objc_retainAutoreleaseReturnValue, objc_retainAutorelease);
Id objc_unsafeClaimAutoreleasedReturnValue(Id object) {
    return object;
}
Id objc_retainAutorelease(Id object) {
    return objc_autorelease(objc_retain(object));
}
Id objc_retainBlock(Id block) {
    return block ? _Block_copy(block) : nullptr;
}
void objc_storeStrong(Id* place, Id object) {
    objc_retain(object);
    const Id old = *place;
    *place = object;
    objc_release(old);
}
void* objc_autoreleasePoolPush() {
    ++pools.depth;
    return reinterpret_cast<void*>(pools.objects.size() + 1);
}
void objc_autoreleasePoolPop(void* pool) {
    const std::size_t size = reinterpret_cast<std::size_t>(pool) - 1;
    while (pools.objects.size() > size) {
        const Id object = pools.objects.back();
        pools.objects.pop_back();
        objc_release(object);
    }
    --pools.depth;
}
void objc_enumerationMutation(Id) {
    violation("a collection was changed while it was enumerated");
}
Id objc_getProperty(Id object, const char*, long offset, bool) {
    return objc_retainAutorelease(*reinterpret_cast<Id*>(reinterpret_cast<char*>(object) + offset));
}
void objc_setProperty_atomic_copy(Id object, const char*, Id value, long offset) {
    objc_storeStrong(reinterpret_cast<Id*>(reinterpret_cast<char*>(object) + offset), value);
}
Id _Block_copy(const void* pointer) {
    auto* block = const_cast<Block*>(static_cast<const Block*>(pointer));
    if (block->flags & kBlockGlobal) return reinterpret_cast<Id>(block);
    if (block->flags & kBlockOnHeap) {
        __atomic_add_fetch(&block->count, 1, __ATOMIC_SEQ_CST);
        return reinterpret_cast<Id>(block);
    }
    auto* copy = static_cast<Block*>(std::malloc(block->descriptor->size));
    std::memcpy(static_cast<void*>(copy), block, block->descriptor->size);
    copy->flags |= kBlockOnHeap;
    copy->count = 1;
    if (copy->flags & kBlockHasHelpers) copy->descriptor->copy(copy, block);
    count("Block", 1);
    return reinterpret_cast<Id>(copy);
}
void _Block_release(const void* pointer) {
    auto* block = const_cast<Block*>(static_cast<const Block*>(pointer));
    if (!(block->flags & kBlockOnHeap)) return;
    if (__atomic_sub_fetch(&block->count, 1, __ATOMIC_SEQ_CST) > 0) return;
    if (block->flags & kBlockHasHelpers) block->descriptor->dispose(block);
    count("Block", -1);
    std::free(block);
}

}  // extern "C"

// The message senders keep the registers that may hold an argument (of floating-point numbers no
// message takes more than one), find the function and jump there. A message to nil gives 0. x86-64
// only.
#define SENDER(name, receiver, find, nothing)                                            \
    ".globl " name "\n.type " name ", @function\n" name ": test " receiver ", " receiver \
    "; jz 1f;"                                                                           \
    "push %rdi; push %rsi; push %rdx; push %rcx; push %r8; push %r9; sub $24, %rsp;"     \
    "movups %xmm0, (%rsp);" find                                                         \
    "call quil_method; movups (%rsp), %xmm0; add $24, %rsp;"                             \
    "pop %r9; pop %r8; pop %rcx; pop %rdx; pop %rsi; pop %rdi; jmp *%rax\n"              \
    "1: " nothing "ret\n"
__asm__(".text\n" SENDER("objc_msgSend", "%rdi", "",
                         "xor %eax, %eax; xor %edx, %edx; xorps %xmm0, %xmm0; xorps %xmm1, %xmm1;")
            SENDER("objc_msgSend_stret", "%rsi", "mov %rsi, %rdi; mov %rdx, %rsi;",
                   "mov %rdi, %rax;"));
