"""A session with the wizard over a pipe, answered by prompt."""

import os
import select
import subprocess

# What a session stands at when it waits: a question, a pause, or the list of hosts.
ENDINGS = ("? ", "quit...\n", "the upgrade...", "a . to finish\n")


class Session:
    """Runs the wizard in a directory. Every prompt is answered; the transcript shows what was typed."""

    def __init__(self, directory, *arguments, program="./gxsetup", **options):
        self.process = subprocess.Popen(
            [program, *arguments], cwd=directory,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options,
        )  # fmt: skip
        self.transcript = ""

    def read_prompt(self):
        """What was printed since the last answer; "" once the program has ended."""
        printed = b""
        while not printed.decode(errors="replace").endswith(ENDINGS):
            if not select.select([self.process.stdout], [], [], 60)[0]:
                self.process.kill()
                raise AssertionError(f"no prompt:\n{self.transcript}{printed.decode(errors='replace')}")
            piece = os.read(self.process.stdout.fileno(), 65536)
            if not piece:
                break
            printed += piece
        text = printed.decode(errors="replace")
        self.transcript += text
        return text if text.endswith(ENDINGS) else ""

    def type(self, answer):
        self.transcript += answer + "\n"
        self.process.stdin.write((answer + "\n").encode())
        self.process.stdin.flush()

    def close(self):
        self.process.stdin.close()
        self.read_prompt()
        assert self.process.wait(20) == 0
        self.process.stdout.close()


def question_of(printed):
    """The last paragraph: a question, without what was said before it."""
    return printed.rstrip(" ").rpartition("\n\n")[2]


def converse(directory, replies, *arguments, **options):
    """Answers each question whose text holds a key of `replies`, and any other one with enter.

    A list holds the answers for a question that comes several times; None ends the input there.
    Every reply must be used. Returns the transcript.
    """
    left = {key: list(reply) if isinstance(reply, list) else [reply] for key, reply in replies.items()}
    session = Session(directory, *arguments, **options)
    for _ in range(100):
        printed = session.read_prompt()
        if not printed:
            break
        question = question_of(printed)
        keys = [key for key, answers in left.items() if key in question and answers]
        assert len(keys) < 2, (keys, question)
        answer = left[keys[0]].pop(0) if keys else ""
        if answer is None:
            break
        session.type(answer)
    else:
        session.process.kill()
        raise AssertionError(f"no end of questions:\n{session.transcript}")
    session.close()
    unused = {key: answers for key, answers in left.items() if answers}
    assert not unused, f"never asked: {unused}\n{session.transcript}"
    return session.transcript
