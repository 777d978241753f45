"""A relay that lets every byte wait, so that a server on this machine is as far away as one abroad."""

import asyncio
import contextlib
import threading


async def _carry(reader, writer, delay):
    loop = asyncio.get_running_loop()
    while piece := await reader.read(1 << 18):
        loop.call_later(delay, writer.write, piece)
    loop.call_later(delay, writer.close)


async def _relay(ready, ended, target, delay):
    async def connected(reader, writer):
        with contextlib.suppress(OSError):
            far_reader, far_writer = await asyncio.open_connection("127.0.0.1", target, limit=1 << 20)
            await asyncio.gather(
                _carry(reader, far_writer, delay), _carry(far_reader, writer, delay)
            )

    server = await asyncio.start_server(connected, "127.0.0.1", 0, limit=1 << 20)
    async with server:
        ready(server.sockets[0].getsockname()[1])
        await ended.wait()


@contextlib.contextmanager
def running(target, round_trip):
    """The port of a relay to the port `target`, with so many seconds there and back."""
    loop = asyncio.new_event_loop()
    ended = asyncio.Event()
    port = []
    started = threading.Event()

    def ready(number):
        port.append(number)
        started.set()

    def serve():
        asyncio.set_event_loop(loop)
        loop.run_until_complete(_relay(ready, ended, target, round_trip / 2))
        for task in asyncio.all_tasks(loop):
            task.cancel()
        loop.run_until_complete(asyncio.sleep(0))
        loop.close()

    thread = threading.Thread(target=serve)
    thread.start()
    started.wait(10)
    try:
        yield port[0]
    finally:
        loop.call_soon_threadsafe(ended.set)
        thread.join()
