# Pretty printers of libzt_base for gdb.
#
# gdb loads this file by itself together with the shared object when it is installed as
# <datadir>/gdb/auto-load/<libdir>/libzt_base.so.<version>-gdb.py. Elsewhere: (gdb) source libzt_base-gdb.py
#
# Nothing here calls into the program, so core files print as live processes do. Records are walked with a
# bound and every link is checked: a torn list is reported, not followed for ever. What lies behind an
# opaque handle needs the debug symbols of the library.
#
# SPDX-License-Identifier: MIT
import gdb
import gdb.printing

LIMIT = 1000  # elements shown of one container
REWIND_THRESHOLD = 0x80000000  # what ring_buf_get_rewind_threshold of the library returns

STATUS_NAMES = """
    Success Pending Timeout Interrupted TryAgain NotImplemented UnknownError InvalidArgument OutOfmemory
    Unsupported FileBusy DeviceBusy DeviceLost IOError ReadError WriteError NotExist TooMany TooLarge
    Overflow Underflow FormatError FileExists FileTypeError DeviceTypeError IsDirectory ReadOnly OutOfRange
    BrokenPipe NoSpace NotDirectory NotPermitted BadAddress SeekError CrossDeviceLink NotInitialized
    AuthFailed NotLoggedIn WrongState Mismatch VerifyFailed ConstraintViolatin Canceled InProgress
    ConnectionRefused ConnectionReset AddressInUse NoResponse InfoChanged InvalidData NeedMoreData NoBuffer
    BufferTooSmall BufferIsEmpty BufferIsFull
""".split()


def address(pointer):
    return int(pointer) & 0xFFFFFFFFFFFFFFFF


def offset_of(record, member):
    """Where a member lies, in bytes; looks into nameless unions and structs. None: no such member."""
    for field in record.fields():
        if field.name == member:
            return field.bitpos // 8
        if not field.name:
            inner = offset_of(field.type, member)
            if inner is not None:
                return field.bitpos // 8 + inner
    return None


def entry_of(link, type_name, member):
    """The record whose member lies at the address link."""
    record = gdb.lookup_type(type_name)
    offset = offset_of(record.strip_typedefs(), member)
    return gdb.Value(address(link) - offset).cast(record.pointer()).dereference()


def links(head):
    """The addresses of the links on a list, in order; ends with a text if the list is torn."""
    start = address(head.address)
    node, before = head['next'], start
    for _ in range(LIMIT):
        if address(node) == start:
            return
        if address(node) == 0:
            yield 'torn: null after 0x%x' % before
            return
        try:
            back = address(node['prev'])
            following = node['next']
            following.fetch_lazy()
        except gdb.MemoryError:
            yield 'torn: 0x%x after 0x%x is no address' % (address(node), before)
            return
        if back != before:
            yield 'torn: 0x%x points back to 0x%x instead of 0x%x' % (address(node), back, before)
            return
        yield node
        before, node = address(node), following
    yield 'more than %d' % LIMIT


def entries(head, type_name, member='link'):
    """The records on a list; a torn list ends with a text."""
    for link in links(head):
        yield link if isinstance(link, str) else entry_of(link, type_name, member)


def tree_nodes(node, depth=0):
    """The addresses of a tree's nodes in order; a red-black tree in memory is never 128 levels deep."""
    if address(node) == 0:
        return
    if depth > 128:
        yield 'torn: deeper than 128 levels'
        return
    yield from tree_nodes(node['left'], depth + 1)
    yield node
    yield from tree_nodes(node['right'], depth + 1)


def text(pointer):
    return pointer.string(errors='replace') if address(pointer) else '(null)'


def fixed_text(array):
    return array.string(errors='replace').split('\0')[0]


def status_text(number):
    if 0 <= number < len(STATUS_NAMES):
        return '%d (%s)' % (number, STATUS_NAMES[number])
    try:  # rows that the application registered; visible with the library's debug symbols only
        rows = gdb.parse_and_eval("'(anonymous namespace)::g_extra'")
        for i in range(int(gdb.parse_and_eval("'(anonymous namespace)::g_extra_count'"))):
            if int(rows[i]['status']) == number:
                return '%d (%s)' % (number, text(rows[i]['code']))
    except gdb.error:
        pass
    return '%d (not registered)' % number


class Printer:
    """A record: summary() is its line, parts() gives what it holds as pairs of name and value."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        try:
            return self.summary()
        except gdb.MemoryError as error:
            return '<%s>' % error

    def children(self):
        try:
            for number, part in enumerate(self.parts()):
                name, value = part if isinstance(part, tuple) else ('[%d]' % number, part)
                yield name, value
        except gdb.MemoryError as error:
            yield 'error', str(error)

    def parts(self):
        return ()


class Status:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return status_text(int(self.value))


class ListHead(Printer):
    def summary(self):
        if address(self.value['next']) == 0:
            return 'list head, never initialised'
        count = sum(1 for link in links(self.value) if not isinstance(link, str))
        return 'list head, %d linked' % count if count else 'list head, empty or not linked'

    def parts(self):
        return links(self.value) if address(self.value['next']) else ()


class Mutex(Printer):
    def summary(self):
        if not self.value['initialized']:
            return 'mutex, ' + ('dummy' if self.value['dummy'] else 'not initialised')
        state = self.value['mutex']['__data']
        if int(state['__lock']) == 0:
            return 'mutex, free'
        return 'mutex, held %d times by LWP %d' % (int(state['__count']), int(state['__owner']))


class Queue(Printer):
    def summary(self):
        queue = self.value
        if not queue['initialized']:
            return 'queue, not created'
        canceled = ', canceled' if queue['canceled'] else ''
        return 'queue, %d of %d items%s' % (int(queue['count']), int(queue['capacity']), canceled)

    def parts(self):
        if self.value['initialized']:
            for node in entries(self.value['items'], 'zt_queue_node_t'):
                yield node if isinstance(node, str) else node['data']


class RingBuf(Printer):
    def summary(self):
        head, tail, size = (int(self.value[name]) for name in ('head', 'tail', 'size'))
        mask = int(self.value['mask'])
        stored = tail - head
        if stored < 0 and size:  # the producer has rebased, the consumer has not
            stored += REWIND_THRESHOLD & ~mask if mask else REWIND_THRESHOLD - REWIND_THRESHOLD % size
        return 'ring buffer, %d of %d units stored, head %d, tail %d' % (stored, size, head, tail)

    def parts(self):
        yield 'buffer', self.value['buffer']
        yield 'claim_head', self.value['claim_head']
        yield 'claim_tail_or_dropped_puts', self.value['claim_tail']


class Tree(Printer):
    def summary(self):
        count = sum(1 for _ in tree_nodes(self.value['root']))
        return 'red-black tree, %d nodes' % count

    def parts(self):
        return tree_nodes(self.value['root'])


class TreeNode(Printer):
    def summary(self):
        word = int(self.value['parent_color'])
        return '%s node' % ('black' if word & 1 else 'red')

    def parts(self):
        parent = int(self.value['parent_color']) & ~1
        yield 'parent', gdb.Value(parent).cast(self.value['left'].type)
        yield 'left', self.value['left']
        yield 'right', self.value['right']


class Heap(Printer):
    def summary(self):
        return 'heap, %d nodes' % int(self.value['count'])

    def parts(self):
        level = [self.value['root']] if address(self.value['root']) else []
        shown = 0
        while level and shown < min(int(self.value['count']), LIMIT):
            node = level.pop(0)
            yield node
            shown += 1
            level += [node[side] for side in ('left', 'right') if address(node[side])]
        if shown != int(self.value['count']) and shown < LIMIT:
            yield 'torn: %d nodes can be reached' % shown


class IdPool(Printer):
    # An entry is a link, the id behind it and the pointer behind that.
    def used(self):
        number = gdb.lookup_type('uint32_t').pointer()
        pointer = gdb.lookup_type('void').pointer().pointer()
        for bucket in range(int(self.value['bucket_count'])):
            for link in links(self.value['buckets'][bucket]):
                if isinstance(link, str):
                    yield 'torn', link
                else:
                    at = address(link)
                    yield int(gdb.Value(at + 16).cast(number).dereference()), \
                        gdb.Value(at + 24).cast(pointer).dereference()

    def summary(self):
        if address(self.value['buckets']) == 0:
            return 'id pool, not created'
        return 'id pool, %d ids in use, next %d' % (sum(1 for _ in self.used()), int(self.value['next_id']))

    def parts(self):
        if address(self.value['buckets']):
            for key, value in sorted(self.used(), key=lambda pair: str(pair[0]).rjust(10)):
                yield 'id %s' % key, value


class MemHeap(Printer):
    def summary(self):
        record = self.value
        return 'memory heap, %d of %d bytes free, alignment %d' % (
            int(record['free_size']), int(record['total_size']), int(record['align']))

    def parts(self):
        for block in entries(self.value['blocks'], 'zt_mem_heap_block_t'):
            if isinstance(block, str):
                yield 'torn', block
            else:
                state = 'free' if block['is_free'] else 'handed out'
                yield '0x%x' % int(block['addr']), '%d bytes %s' % (int(block['size']), state)


class MemHeapHandle(Printer):
    def summary(self):
        return MemHeap(self.value.dereference()).summary() if address(self.value) else 'memory heap, not created'

    def parts(self):
        return MemHeap(self.value.dereference()).parts() if address(self.value) else ()


class Watchdog(Printer):
    def summary(self):
        entry = self.value
        return '"%s", last alive at %d ms, time-out %d ms, user %d' % (
            text(entry['name']), int(entry['last_alive_ms']), int(entry['timeout_ms']), int(entry['user']))


class WatchdogMgr(Printer):
    def summary(self):
        count = sum(1 for _ in links(self.value['clients'])) if address(self.value['clients']['next']) else 0
        hardware = 'with' if address(self.value['hw']) else 'without'
        return 'watchdog manager, %d entries, %s hardware' % (count, hardware)

    def parts(self):
        if address(self.value['clients']['next']):
            yield from entries(self.value['clients'], 'zt_watchdog_t')


class Opaque(Printer):
    """A handle whose state only the library's debug symbols describe."""
    what = priv_type = ''

    def state(self):
        """The state; None without one. A gdb.error tells that there are no debug symbols."""
        if address(self.value['priv']) == 0:
            return None
        return self.value['priv'].cast(gdb.lookup_type(self.priv_type).pointer()).dereference()

    def summary(self):
        try:
            state = self.state()
        except gdb.error:
            return '%s, state at 0x%x (needs debug symbols of libzt_base)' % (self.what, address(self.value['priv']))
        return '%s, not created' % self.what if state is None else '%s, %s' % (self.what, self.line(state))

    def parts(self):
        try:
            state = self.state()
        except gdb.error:
            return
        if state is not None:
            yield from self.details(state)


class NtfMgr(Opaque):
    what, priv_type = 'notification manager', 'zt_ntf_mgr_priv_t'

    def line(self, state):
        return '%d subscribers of %d notifications' % tuple(
            sum(1 for _ in tree_nodes(state[tree]['root'])) for tree in ('subscribers', 'notifications'))

    def details(self, state):
        for node in tree_nodes(state['subscribers']['root']):
            one = entry_of(node, 'zt_ntf_subscriber_t', 'node')
            yield 'subscriber %d' % int(one['id']), 'mask 0x%x, flags 0x%x, raw 0x%x' % (
                int(one['en_mask']), int(one['flags']), int(one['raw_flags']))
        for node in tree_nodes(state['notifications']['root']):
            one = entry_of(node, 'zt_ntf_entry_t', 'node')
            heard = ', '.join(
                link if isinstance(link, str) else '%d by bit %d' % (int(link['subscriber_id']), int(link['bit']))
                for link in entries(one['links'], 'zt_ntf_link_t'))
            yield 'notification %d' % int(one['id']), 'to ' + heard


class Ptz(Opaque):
    what, priv_type = 'PTZ channel', 'zt_ptz_channel_t'

    def line(self, state):
        return '%d clients, %d of %d commands pending' % (
            int(state['client_count']), int(state['pending_count']), int(state['cmd_capacity']))

    def details(self, state):
        for one in entries(state['clients'], 'zt_ptz_client_slot_t'):
            yield ('torn', one) if isinstance(one, str) else (
                'client %d' % int(one['id']), '"%s"' % fixed_text(one['name']))
        for one in entries(state['pending'], 'zt_ptz_cmd_slot_t'):
            yield ('torn', one) if isinstance(one, str) else (
                'command %d' % int(one['seq']), 'code 0x%x from client %d' % (int(one['code']), int(one['client_id'])))


class Thread(Printer):
    def summary(self):
        if address(self.value) == 0:
            return 'no thread'
        try:
            record = self.value.cast(gdb.lookup_type('zt_thread_record_t').pointer()).dereference()
            return 'thread "%s", priority %d' % (fixed_text(record['name']), int(record['priority']))
        except gdb.error:
            return 'thread record at 0x%x' % address(self.value)


PRINTERS = {
    'zt_status_t': Status,
    'zt_list_head_t': ListHead,
    'zt_mutex_t': Mutex,
    'zt_queue_t': Queue,
    'zt_ring_buf_t': RingBuf,
    'zt_rbtree_t': Tree,
    'zt_rbtree_node_t': TreeNode,
    'zt_heap_t': Heap,
    'zt_id_pool_t': IdPool,
    'zt_mem_heap_record_t': MemHeap,
    'zt_mem_heap_t': MemHeapHandle,
    'zt_watchdog_t': Watchdog,
    'zt_watchdog_mgr_t': WatchdogMgr,
    'zt_ntf_mgr_t': NtfMgr,
    'zt_ptz_t': Ptz,
    'zt_thread_t': Thread,
}


class Lookup(gdb.printing.PrettyPrinter):
    """By the name of the type as it was declared: a status is an int32_t behind its own name."""

    def __init__(self):
        super().__init__('libzt_base')

    def __call__(self, value):
        kind = value.type.unqualified()
        while True:
            if kind.name in PRINTERS:
                return PRINTERS[kind.name](value)
            if kind.code != gdb.TYPE_CODE_TYPEDEF:
                return None
            kind = kind.target().unqualified()


gdb.printing.register_pretty_printer(gdb.current_objfile(), Lookup(), replace=True)
