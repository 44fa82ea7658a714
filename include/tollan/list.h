/*
 * Handle-based list: a growable array of fixed-size items kept in one
 * relocatable block reached through a handle (a pointer to the pointer of the
 * block). Items are copied in and out by value and numbered from 1. The list
 * never calls the heap itself: every allocation goes through a record of
 * eight callbacks chosen when the list is created. A small stack interface
 * (SNew, SPush, ...) is layered on top.
 *
 * Positions: items are numbered from 1. kEndOfList (0) stands for the place
 * after the last item when inserting and for the last item when reading or
 * removing; -1 stands for the front (position 1). LReplaceItem alone refuses
 * kEndOfList.
 *
 * Errors: programming errors (a NULL or overwritten list, a bad position, a
 * missing callback) are reported through ZORAssert from "list.c" and the call
 * returns its failure value; the program goes on. Allocation failures return
 * the SetHSz callback's error code and are logged at the WARNING level.
 *
 * Thread safety: a list has no lock of its own; callers serialise access to
 * each list. Different lists may be used from different threads at once.
 */
#ifndef TOLLAN_LIST_H
#define TOLLAN_LIST_H

#include <tollan/export.h>

TOLLAN_BEGIN_DECLS

/* Positions with a meaning of their own. */
enum { kEndOfList = 0, kFrontOfList = -1 };

/* Result codes of the list operations that return a status. */
enum {
    kListNoError = 0,
    kListErrArgument = 1,     /* NULL list, bad position, mismatched item sizes */
    kListErrMemoryFull = 2,   /* the default allocator could not get the memory */
    kListErrHandleLocked = 3, /* the default allocator cannot grow a locked handle */
    kListErrCorrupt = 45      /* the list's sanity word was overwritten */
};

/* The sanity word at offset 4 of every list block, and its byte-swapped twin. */
#define LIST_SANITY_WORD 0xB00BDEEDu
#define LIST_SANITY_WORD_SWAPPED 0xEDDE0BB0u
/* Default growth: 110 % of the capacity (high half) plus 4 items (low half). */
#define LIST_DEFAULT_ALLOC_POLICY 0x006E0004u
/* Bytes of a list block besides its items: the 32-byte header and 8 of slack. */
#define LIST_BLOCK_OVERHEAD 40u

typedef struct CollectionMemAllocFunctions CollectionMemAllocFunctions;

/*
 * The list block. One allocation of itemSize x capacity + 40 bytes:
 *   offset  0  options      the creator's options word; copied, never interpreted
 *   offset  4  sanity       LIST_SANITY_WORD
 *   offset  8  allocPolicy  high 16 bits: growth in percent of the capacity (signed);
 *                           low 16 bits: minimum growth in items
 *   offset 12  capacity     item slots allocated
 *   offset 16  itemSize     bytes per item
 *   offset 20  numItems     items in use
 *   offset 24  memFuncs     the allocation-callback record
 *   offset 32  items        item n at 32 + (n - 1) x itemSize; 8 bytes of slack follow
 */
typedef struct ListBlock {
    uint32_t options;
    uint32_t sanity;
    uint32_t allocPolicy;
    uint32_t capacity;
    uint32_t itemSize;
    int32_t numItems;
    const CollectionMemAllocFunctions *memFuncs;
} ListBlock;

/* A list: a handle to its block. The block moves when the list grows. */
typedef ListBlock **ListType;
/* A stack is a list used from its end. */
typedef ListType StackType;

/* Orders two items: negative, 0 or positive as a sorts before, with or after b. */
typedef int32_t (*ListCompareFunction)(const void *a, const void *b);
/* Called by LTraverse with each item's address and the caller's data. */
typedef void (*ListTraverseFunction)(void *item, void *data);
/* Gives the byte size of a block that an item of a pointer list points to. */
typedef size_t (*ListPtrSizeFunction)(const void *block);

/*
 * The eight allocation callbacks, in slot order. A handle is a pointer to a
 * master pointer that holds the address of the block.
 */
typedef void **(*ListNewHandFunction)(size_t byteSize, uint32_t options, uint32_t initialCapacity,
                                      const CollectionMemAllocFunctions *record);
typedef void (*ListDisposeHandFunction)(void **handle);
typedef int32_t (*ListSetHSzFunction)(void **handle, size_t byteSize);
typedef void *(*ListNewPtrFunction)(size_t byteSize, const CollectionMemAllocFunctions *record);
typedef void (*ListDisposePtrFunction)(void *block);
typedef void (*ListHLockFunction)(void **handle);
typedef void (*ListHUnlockFunction)(void **handle);
typedef size_t (*ListHSizeFunction)(void **handle);

struct CollectionMemAllocFunctions {
    /* Slot 0: a new handle of byteSize bytes, or NULL. Also given the list's
       options word, its initial capacity and this record. */
    ListNewHandFunction newHand;
    /* Slot 1: frees a handle and its block. */
    ListDisposeHandFunction disposeHand;
    /* Slot 2: resizes a handle's block; 0 on success, else an error code and
       the block is left as it was. The block may move. */
    ListSetHSzFunction setHSz;
    /* Slot 3: a plain block of byteSize bytes, or NULL. */
    ListNewPtrFunction newPtr;
    /* Slot 4: frees a plain block. */
    ListDisposePtrFunction disposePtr;
    /* Slot 5: locks a handle: its block does not move until unlocked. */
    ListHLockFunction hLock;
    /* Slot 6: undoes one HLock. */
    ListHUnlockFunction hUnlock;
    /* Slot 7: the byte size of a handle's block. */
    ListHSizeFunction hSize;
};

/* ---- allocation callbacks ------------------------------------------------ */

/*
 * Fills record from the eight callbacks. Note the argument order, which is
 * not the slot order. A NULL record is an assertion failure and nothing is
 * written.
 */
TOLLAN_API void SetCollectionMemAllocFunctions(CollectionMemAllocFunctions *record,
                                               ListNewHandFunction newHand, ListNewPtrFunction newPtr,
                                               ListDisposeHandFunction disposeHand,
                                               ListDisposePtrFunction disposePtr, ListSetHSzFunction setHSz,
                                               ListHLockFunction hLock, ListHUnlockFunction hUnlock,
                                               ListHSizeFunction hSize) TOLLAN_NOEXCEPT;

/*
 * The library's own callback record over the C heap, installed at start-up.
 * The stack interface, DLDiscard and LListMemSize always use it.
 */
TOLLAN_API const CollectionMemAllocFunctions *GetDefaultCollectionMemAllocFunctions(void) TOLLAN_NOEXCEPT;

/* ---- creation and disposal ----------------------------------------------- */

/*
 * Creates an empty list of items of itemSize bytes with room for
 * initialCapacity items, allocated through memFuncs (which must outlive the
 * list). options is kept and copied but not interpreted. Returns the list,
 * or NULL when memFuncs is NULL (assertion) or the allocation fails
 * (WARNING "Failed to allocate list handle.").
 */
TOLLAN_API ListType LCreateWithOptions(uint32_t itemSize, uint32_t options, uint32_t initialCapacity,
                                       const CollectionMemAllocFunctions *memFuncs) TOLLAN_NOEXCEPT;
/*
 * Frees the list through its own DisposeHand. NULL is ignored. A sanity word
 * in either byte order is accepted; any other is an assertion failure and
 * nothing is freed.
 */
TOLLAN_API void LDiscard(ListType list) TOLLAN_NOEXCEPT;
/* LDiscard through the default record's DisposeHand, for lists made over it. */
TOLLAN_API void DLDiscard(void *list) TOLLAN_NOEXCEPT;
/* Empties the list; the capacity is kept. */
TOLLAN_API void LClear(ListType list) TOLLAN_NOEXCEPT;
/*
 * A new list with the same item size, options, policy and callbacks, holding
 * copies of the items and no spare capacity. NULL on failure (logged).
 */
TOLLAN_API ListType LCopy(ListType list) TOLLAN_NOEXCEPT;
/*
 * For a list whose items are pointers to blocks: a copy whose items point to
 * fresh copies of the blocks (sizeFunction gives each block's size, NewPtr
 * allocates). NULL items are left out of the copy. On any failure every block
 * already made is freed, the copy is discarded and NULL returned.
 */
TOLLAN_API ListType LCopyPtrList(ListType list, ListPtrSizeFunction sizeFunction) TOLLAN_NOEXCEPT;
/* Frees every non-NULL item's block with DisposePtr, then discards the list. */
TOLLAN_API void LDiscardPtrList(ListType list) TOLLAN_NOEXCEPT;

/* ---- queries ------------------------------------------------------------- */

/* The number of items; 0 with an assertion failure for a NULL or overwritten list. */
TOLLAN_API int32_t LNumItems(ListType list) TOLLAN_NOEXCEPT;
/* As LNumItems, but a NULL list quietly has 0 items. */
TOLLAN_API int32_t LNumItemsSafe(ListType list) TOLLAN_NOEXCEPT;
/*
 * The byte size of the list's block as the default record's HSize reports it;
 * meaningful only for lists made over the default record. 0 for NULL.
 */
TOLLAN_API size_t LListMemSize(ListType list) TOLLAN_NOEXCEPT;
/* The address of item 1 (valid until the list next grows); NULL for a bad list. */
TOLLAN_API void *LGetListDataPtr(ListType list) TOLLAN_NOEXCEPT;
/*
 * The address of the item at position (-1: the first, 0: the last), valid
 * until the list next grows. NULL with an assertion failure for a bad list or
 * position.
 */
TOLLAN_API void *LGetPtrToItem(ListType list, int32_t position) TOLLAN_NOEXCEPT;
/* 1 when compare finds every item no greater than the next, else 0. */
TOLLAN_API int32_t LIsSorted(ListType list, ListCompareFunction compare) TOLLAN_NOEXCEPT;

/* ---- item access --------------------------------------------------------- */

/*
 * Copies the item at position (-1: the first, 0: the last) into buffer.
 * Returns 0; 1 for a NULL list, an empty list or a bad position (assertion)
 * or a NULL buffer (WARNING "Trying to get list item into NULL buffer."); 45
 * for an overwritten list. Nothing is copied on failure.
 */
TOLLAN_API int32_t LGetItem(ListType list, void *buffer, int32_t position) TOLLAN_NOEXCEPT;
/*
 * Copies item over the item at position (-1: the first). kEndOfList is
 * refused with an assertion failure. On an empty list logs a WARNING and does
 * nothing. Returns 0, 1 or 45 as LGetItem.
 */
TOLLAN_API int32_t LReplaceItem(ListType list, const void *item, int32_t position) TOLLAN_NOEXCEPT;
/* Sets the item count without any check against the capacity. */
TOLLAN_API void LSetNumItems(ListType list, int32_t numItems) TOLLAN_NOEXCEPT;
/*
 * Makes sure that at least count free slots follow the items, growing by
 * exactly what is missing. Returns 0 or the allocation error code.
 */
TOLLAN_API int32_t LPreAllocateItems(ListType list, int32_t count) TOLLAN_NOEXCEPT;
/*
 * Sets the growth policy: policy = percent x 65536 + minimumItems, so the list
 * grows by percent % of its capacity plus minimumItems items.
 */
TOLLAN_API void LSetMemoryAllocPolicy(ListType list, int32_t minimumItems, int32_t percent) TOLLAN_NOEXCEPT;

/* ---- insertion ----------------------------------------------------------- */

/*
 * Inserts a copy of item before position (kEndOfList or numItems + 1: after
 * the last item; -1: at the front), growing by the policy when full.
 * Returns 0; 1 for a NULL list or a position beyond numItems + 1; 45 for an
 * overwritten list; else the allocation error code (the list is unchanged).
 */
TOLLAN_API int32_t LInsertItem(ListType list, const void *item, int32_t position) TOLLAN_NOEXCEPT;
/*
 * Inserts copies of all items of other (same item size, may be list itself)
 * before position, with the positions of LInsertItem. Results as LInsertItem.
 */
TOLLAN_API int32_t LInsertInList(ListType list, ListType other, int32_t position) TOLLAN_NOEXCEPT;
/*
 * Appends all items of list2 (same item size) to list1 and shrinks or grows
 * list1's block to exactly fit. Returns list1, or NULL on failure (list1 is
 * then unchanged).
 */
TOLLAN_API ListType LAppend(ListType list1, ListType list2) TOLLAN_NOEXCEPT;
/*
 * Inserts item into a list kept sorted by compare. *found (may be NULL) is set
 * to 1 when an equal item is present; then the item is inserted before it
 * only when allowDuplicates is non-zero. Returns 0, also when the insertion
 * fails for lack of memory (logged); 1 for a NULL list, item or compare; 45
 * for an overwritten list.
 */
TOLLAN_API int32_t LInsertItemInOrderEx(ListType list, const void *item, ListCompareFunction compare,
                                        int32_t allowDuplicates, int32_t *found) TOLLAN_NOEXCEPT;
/*
 * Inserts every item of other (same item size, not list itself) into the
 * sorted list in order, duplicates included. Returns 0, or 1 / 45 as
 * LInsertItemInOrderEx for bad arguments.
 */
TOLLAN_API int32_t LInsertListInOrder(ListType list, ListType other,
                                      ListCompareFunction compare) TOLLAN_NOEXCEPT;

/* ---- removal (the capacity never shrinks) -------------------------------- */

/*
 * Removes the item at position (-1: the first, 0: the last), copying it into
 * buffer first when buffer is not NULL. Returns 0; 1 for a NULL or empty list
 * or a bad position; 45 for an overwritten list.
 */
TOLLAN_API int32_t LRemoveItem(ListType list, void *buffer, int32_t position) TOLLAN_NOEXCEPT;
/*
 * Removes count items from position on (positions as LRemoveItem); count must
 * not exceed numItems - position + 1. Results as LRemoveItem.
 */
TOLLAN_API int32_t LRemoveItems(ListType list, int32_t position, int32_t count) TOLLAN_NOEXCEPT;
/* LRemoveItems for a list of pointers: each removed non-NULL block is freed with DisposePtr. */
TOLLAN_API int32_t LRemoveItemsPtrList(ListType list, int32_t position, int32_t count) TOLLAN_NOEXCEPT;

/* ---- searching, sorting, traversal --------------------------------------- */

/*
 * Binary search of a list sorted by compare: the position of an item equal to
 * item, or 0. The block is locked during the search.
 */
TOLLAN_API int32_t LBinSearch(ListType list, const void *item, ListCompareFunction compare) TOLLAN_NOEXCEPT;
/*
 * Linear search from startPosition to endPosition, both included (-1: the
 * first, 0: the last item); backwards when start lies after end.
 * compare(item, itemAddress) == 0 marks a match. Returns its position or 0
 * (also for an empty list).
 */
TOLLAN_API int32_t LFindItemInRange(ListType list, const void *item, int32_t startPosition,
                                    int32_t endPosition, ListCompareFunction compare) TOLLAN_NOEXCEPT;
/* Sorts the items in place by compare (not stable); allocates nothing. */
TOLLAN_API void LQuickSort(ListType list, ListCompareFunction compare) TOLLAN_NOEXCEPT;
/*
 * Calls function(itemAddress, data) for positions 1 to the item count taken
 * before the walk.
 */
TOLLAN_API void LTraverse(ListType list, ListTraverseFunction function, void *data) TOLLAN_NOEXCEPT;

/* ---- auto-growing access ------------------------------------------------- */

/*
 * Makes the list hold at least count items: the new items are not
 * initialised. Grows by the larger of the policy's growth and what is
 * missing. Returns 0 or the allocation error code.
 */
TOLLAN_API int32_t LUnlimitedExpandSpace(ListType list, int32_t count) TOLLAN_NOEXCEPT;
/* LUnlimitedExpandSpace to position items, then LGetItem. */
TOLLAN_API int32_t LUnlimitedGetItem(ListType list, void *buffer, int32_t position) TOLLAN_NOEXCEPT;
/* LUnlimitedExpandSpace to position items, then LReplaceItem. */
TOLLAN_API int32_t LUnlimitedSetItem(ListType list, const void *item, int32_t position) TOLLAN_NOEXCEPT;

/* ---- stack over the default record --------------------------------------- */

/*
 * Creates an empty stack of items of itemSize bytes into *stack. Returns 0,
 * or 2 when stack is NULL or the allocation fails (*stack is then NULL).
 */
TOLLAN_API int32_t SNew(StackType *stack, uint32_t itemSize) TOLLAN_NOEXCEPT;
/* Pushes a copy of item. Results as LInsertItem. */
TOLLAN_API int32_t SPush(StackType stack, const void *item) TOLLAN_NOEXCEPT;
/* Copies the top item into buffer. Returns 0 (an empty stack is an assertion failure). */
TOLLAN_API int32_t STop(StackType stack, void *buffer) TOLLAN_NOEXCEPT;
/* Pops the top item into buffer (may be NULL). Returns 0 (an empty stack is an assertion failure). */
TOLLAN_API int32_t SPop(StackType stack, void *buffer) TOLLAN_NOEXCEPT;
/* Empties the stack. NULL is ignored. */
TOLLAN_API void SClear(StackType stack) TOLLAN_NOEXCEPT;
/* Discards *stack and sets it to NULL. A NULL address or stack is ignored. */
TOLLAN_API void SDispose(StackType *stack) TOLLAN_NOEXCEPT;

TOLLAN_END_DECLS

#endif
