"""Tests of the Python binding, on the library that is built.

DORVEX_LIBRARY names the library, DORVEX_SAMPLES a folder of documents,
DORVEX_FAKE_READER a scripted reader module, DORVEX_DOCS the folder of pages."""

import io
import multiprocessing
import os
import pathlib
import pickle
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import dorvex

SAMPLES = pathlib.Path(os.environ["DORVEX_SAMPLES"])
KEYNOTE = SAMPLES / "keynote-sample.key"
FAKE_READER = os.environ["DORVEX_FAKE_READER"]


def count_texts(path):
    return len(list(dorvex.texts(path)))


class Texts(unittest.TestCase):
    def test_gives_the_texts_of_a_path(self):
        texts = list(dorvex.texts(KEYNOTE))
        self.assertEqual(texts[0], "A Pot of Tea")
        self.assertEqual(len(texts), 17)
        self.assertEqual(list(dorvex.texts(str(KEYNOTE))), texts)

    def test_gives_the_same_texts_of_bytes_and_of_files(self):
        texts = list(dorvex.texts(KEYNOTE))
        data = KEYNOTE.read_bytes()
        for source in (data, bytearray(data), memoryview(data), io.BytesIO(data)):
            self.assertEqual(list(dorvex.texts(source)), texts, type(source))
        with open(KEYNOTE, "rb") as file:
            self.assertEqual(list(dorvex.texts(file)), texts)

    def test_raises_at_the_end_of_a_document_that_was_not_read(self):
        texts = dorvex.texts(b"words")
        with self.assertRaises(dorvex.UnsupportedError) as raised:
            next(texts)
        self.assertEqual(raised.exception.result.failure, "not-a-package")
        self.assertIn("not a package at all", str(raised.exception))

    def test_takes_limits(self):
        with self.assertRaises(dorvex.LimitError):
            with dorvex.Host(max_members=1) as host:
                list(host.texts(KEYNOTE))
        self.assertEqual(len(list(dorvex.texts(KEYNOTE, timeout=None, max_memory=None))), 17)

    def test_passes_on_what_a_read_method_raises(self):
        class Broken:
            def read(self, count):
                raise LookupError("broken")

        with self.assertRaisesRegex(LookupError, "broken"):
            list(dorvex.texts(Broken()))

    def test_refuses_a_read_method_that_gives_too_much(self):
        class TooMuch:
            def read(self, count):
                return bytes(count + 1)

        with self.assertRaisesRegex(ValueError, "bytes"):
            list(dorvex.texts(TooMuch()))

    def test_refuses_what_is_no_source(self):
        with self.assertRaises(TypeError):
            list(dorvex.texts(7))

    def test_refuses_a_path_with_a_nul(self):
        for path in ("a\0b", pathlib.Path("a\0b")):
            with self.assertRaisesRegex(ValueError, "NUL"):
                list(dorvex.texts(path))
        with self.assertRaisesRegex(ValueError, "NUL"):
            dorvex.Host(module="a\0b")

    def test_refuses_a_file_in_text_mode(self):
        with open(__file__, encoding="utf-8") as file:
            with self.assertRaisesRegex(TypeError, "binary mode"):
                list(dorvex.texts(file))
        with self.assertRaisesRegex(TypeError, "binary mode"):
            list(dorvex.texts(io.StringIO("text")))

    def test_keeps_few_processes_whatever_limits_are_asked_for(self):
        before = len(os.listdir("/proc/self/fd"))
        for tenths in range(30):
            self.assertEqual(len(list(dorvex.texts(KEYNOTE, timeout=20 + tenths / 10))), 17)
        self.assertLess(len(os.listdir("/proc/self/fd")), before + 20)
        self.assertLessEqual(len(dorvex._host._shared._hosts), 4)

    def test_gives_a_document_to_its_end_whose_host_has_gone(self):
        texts = dorvex.texts(KEYNOTE, timeout=99)
        first = next(texts)
        for seconds in range(10):
            list(dorvex.texts(KEYNOTE, timeout=50 + seconds))
        self.assertEqual(len([first, *texts]), 17)

    def test_works_in_a_pool_of_spawned_processes(self):
        with multiprocessing.get_context("spawn").Pool(2) as pool:
            self.assertEqual(pool.map(count_texts, [str(KEYNOTE)] * 4), [17] * 4)

    def test_works_in_a_forked_child(self):
        self.assertEqual(len(list(dorvex.texts(KEYNOTE))), 17)
        child = os.fork()
        if child == 0:
            try:
                os._exit(0 if len(list(dorvex.texts(KEYNOTE))) == 17 else 1)
            finally:
                os._exit(2)
        self.assertEqual(os.waitpid(child, 0)[1], 0)
        self.assertEqual(len(list(dorvex.texts(KEYNOTE))), 17)


class Errors(unittest.TestCase):
    """One document for each family of failures, by the scripted reader where the
    real one cannot be brought to fail so."""

    def error_of(self, source, **options):
        with dorvex.Host(**options) as host:
            with self.assertRaises(dorvex.DocumentError) as raised:
                list(host.texts(source))
            return raised.exception

    def test_have_a_class_for_each_family(self):
        damaged = bytearray(KEYNOTE.read_bytes())
        damaged[-40:] = bytes(40)
        fake = {"module": FAKE_READER}
        cases = [
            (dorvex.UnreadableError, "/no/such/file", {}),
            (dorvex.UnsupportedError, b"", {}),
            (dorvex.DamagedError, damaged, {}),
            (dorvex.LimitError, KEYNOTE, {"max_output": 100}),
            (dorvex.TimeLimitError, b"hang\n", fake | {"timeout": 0.1}),
            (dorvex.CrashError, b"crash\n", fake),
            (dorvex.InstallationError, KEYNOTE, {"module": "/no/such/module.so"}),
        ]
        for family, source, options in cases:
            with self.subTest(family=family.__name__):
                error = self.error_of(source, **options)
                self.assertIs(type(error), family)
                self.assertEqual(str(error), error.result.message)
                self.assertNotEqual(error.result.status, dorvex.Status.OK)

    def test_know_every_failure_of_the_library(self):
        from dorvex import _library, _result

        names = [_library.library.dorvex_failure_name(n).decode() for n in range(64)]
        self.assertEqual({"none", *_result._ERRORS}, set(names))

    def test_can_be_sent_to_another_process(self):
        error = self.error_of(b"words")
        again = pickle.loads(pickle.dumps(error))
        self.assertIs(type(again), type(error))
        self.assertEqual(again.result, error.result)


class Interruption(RuntimeError):
    pass


class Signals(unittest.TestCase):
    """A signal is handled while a document is read, and takes no time limit away."""

    def setUp(self):
        self.before = signal.getsignal(signal.SIGALRM)

    def tearDown(self):
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, self.before)

    def hang(self, source=b"hang\n", **limits):
        started = time.monotonic()
        with dorvex.Host(module=FAKE_READER, **limits) as host:
            try:
                list(host.texts(source))
            finally:
                self.assertLess(time.monotonic() - started, 8)

    def test_leave_the_time_limit_as_it_is(self):
        signal.signal(signal.SIGALRM, lambda *_: None)
        for interval in (0, 0.05):
            signal.setitimer(signal.ITIMER_REAL, 0.2, interval)
            with self.assertRaises(dorvex.TimeLimitError):
                self.hang(timeout=1)

    def test_raise_what_their_handler_raises_at_once(self):
        def interrupt(*_):
            raise Interruption

        signal.signal(signal.SIGALRM, interrupt)
        signal.setitimer(signal.ITIMER_REAL, 0.2)
        with self.assertRaises(Interruption):
            self.hang(timeout=30)

    def test_raise_keyboard_interrupts_at_once(self):
        with tempfile.TemporaryDirectory() as folder:
            pipe = os.path.join(folder, "pipe.pages")
            os.mkfifo(pipe)
            for source in (b"hang\n", pipe):
                threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT)).start()
                with self.assertRaises(KeyboardInterrupt):
                    self.hang(source, timeout=30)

    def test_leave_the_document_to_be_read_on(self):
        def interrupt(*_):
            raise Interruption

        signal.signal(signal.SIGALRM, interrupt)
        signal.setitimer(signal.ITIMER_REAL, 0.2)
        with dorvex.Host(module=FAKE_READER) as host:
            with host.open(b"text one\nbuffer\nnap\ntext two\n") as document:
                texts = [next(document)]
                with self.assertRaises(Interruption):
                    next(document)
                self.assertEqual(texts + list(document), ["one", "two"])


class Documents(unittest.TestCase):
    def setUp(self):
        self.host = dorvex.Host()
        self.fake = dorvex.Host(module=FAKE_READER)

    def tearDown(self):
        self.host.close()
        self.fake.close()

    def test_tell_what_became_of_them(self):
        with self.host.open(KEYNOTE) as document:
            result = document.result
        self.assertEqual(result.status, dorvex.Status.OK)
        self.assertEqual(result.kind, dorvex.Kind.KEYNOTE)
        self.assertEqual((result.failure, result.limit, result.message), ("none", "none", ""))
        self.assertEqual((result.module_result, result.signal, result.skipped), (0, 0, ()))
        self.assertGreater(result.token_bytes, 100)

    def test_name_the_members_that_were_skipped(self):
        with tempfile.TemporaryDirectory() as folder:
            index = pathlib.Path(folder, "a.pages", "Index")
            index.mkdir(parents=True)
            index.joinpath("Document.iwa").write_bytes(b"junk")
            with self.host.open(index.parent) as document:
                skipped = document.result.skipped
        self.assertEqual(
            skipped,
            (dorvex.SkippedMember("Index/Document.iwa", "chunk 1 has no valid header"),),
        )

    def test_decode_texts_as_asked(self):
        script = b"text \xff one\n"
        for errors, expected in (("replace", "\ufffd one"), ("ignore", " one")):
            with self.fake.open(script, errors=errors) as document:
                self.assertEqual(list(document), [expected])
        with self.fake.open(script, errors="strict") as document:
            with self.assertRaises(UnicodeDecodeError):
                list(document)
        with self.fake.open(script) as document:
            self.assertEqual(list(document.raw_texts()), [b"\xff one"])

    def test_give_their_tokens(self):
        with self.host.open(KEYNOTE) as document:
            stream = b"".join(document.tokens())
            self.assertEqual(len(stream), document.result.token_bytes)
        self.assertEqual(stream[0], 0x0F)

    def test_can_be_closed_early_and_twice(self):
        document = self.host.open(KEYNOTE)
        next(document)
        document.close()
        document.close()
        with self.assertRaisesRegex(ValueError, "closed"):
            next(document)
        with self.assertRaisesRegex(ValueError, "closed"):
            document.result

    def test_outlive_their_host(self):
        with dorvex.Host() as host:
            document = host.open(KEYNOTE)
        self.assertEqual(len(list(document)), 17)
        document.close()

    def test_let_other_threads_run(self):
        ticks = []
        done = threading.Event()

        def tick():
            while not done.wait(0.01):
                ticks.append(1)

        with dorvex.Host(module=FAKE_READER, timeout=0.5) as host:
            ticker = threading.Thread(target=tick)
            with host.open(b"hang\n") as document:
                ticker.start()
                document.result
            done.set()
            ticker.join()
        self.assertGreater(len(ticks), 10)

    def test_are_read_by_several_threads_of_one_host(self):
        counts = []

        def read():
            for _ in range(5):
                counts.append(len(list(self.host.texts(KEYNOTE))))

        threads = [threading.Thread(target=read) for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(counts, [17] * 20)


class Hosts(unittest.TestCase):
    def test_refuse_values_out_of_range(self):
        for options in (
            {"timeout": 0},
            {"timeout": -1},
            {"max_memory": 0},
            {"max_members": 1 << 32},
            {"isolation": 7},
            {"sandbox": 7},
        ):
            with self.subTest(options=options), self.assertRaises(ValueError):
                dorvex.Host(**options)

    def test_refuse_to_open_once_they_are_closed(self):
        host = dorvex.Host()
        host.close()
        host.close()
        with self.assertRaisesRegex(ValueError, "closed"):
            host.open(KEYNOTE)

    def test_refuse_to_work_in_a_forked_child(self):
        with dorvex.Host() as host:
            child = os.fork()
            if child == 0:
                try:
                    host.open(KEYNOTE)
                except RuntimeError:
                    os._exit(0)
                finally:
                    os._exit(1)
            self.assertEqual(os.waitpid(child, 0)[1], 0)
            self.assertEqual(len(list(host.texts(KEYNOTE))), 17)

    def test_read_in_this_process_on_request(self):
        code = (
            "import dorvex, sys\n"
            "with dorvex.Host(isolation=dorvex.Isolation.IN_PROCESS) as host:\n"
            "    print(len(list(host.texts(sys.argv[1]))))\n"
        )
        run = subprocess.run([sys.executable, "-c", code, KEYNOTE], capture_output=True, text=True)
        self.assertEqual((run.stdout, run.stderr), ("17\n", ""))


class Library(unittest.TestCase):
    def test_tells_its_version(self):
        self.assertEqual(dorvex.__version__, os.environ["DORVEX_VERSION"])

    def test_that_is_missing_is_named(self):
        run = subprocess.run(
            [sys.executable, "-c", "import dorvex"],
            env=os.environ | {"DORVEX_LIBRARY": "/no/such/libdorvex.so"},
            capture_output=True,
            text=True,
        )
        self.assertIn("ImportError: the dorvex library cannot be loaded", run.stderr)
        self.assertIn("/no/such/libdorvex.so", run.stderr)


class Page(unittest.TestCase):
    """docs/python.md, each example of which is run."""

    def test_shows_examples_that_work(self):
        page = pathlib.Path(os.environ["DORVEX_DOCS"], "python.md").read_text(encoding="utf-8")
        examples = re.findall(r"```python\n(.*?)```", page, flags=re.S)
        self.assertEqual(len(examples), 3)
        with tempfile.TemporaryDirectory() as folder:
            shutil.copy(KEYNOTE, pathlib.Path(folder, "Letter.pages"))
            run = subprocess.run(
                [sys.executable, "-c", "import dorvex\n" + "\n".join(examples)],
                cwd=folder,
                capture_output=True,
                text=True,
            )
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        self.assertTrue(run.stdout.startswith("A Pot of Tea\n"), run.stdout)
        comments = re.findall(r"  # (not.a.package.*)", page)
        self.assertEqual(len(comments), 2)
        for comment in comments:
            self.assertIn(comment + "\n", run.stdout)


if __name__ == "__main__":
    unittest.main()
