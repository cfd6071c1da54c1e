"""A failure that fits on a screen: what a failed assertion says is bounded, however long the compared texts are."""

MOST = 3000


class Failure(AssertionError):
    """For `failureException` of a test case."""

    def __init__(self, text=""):
        text = str(text)
        if len(text) > MOST:
            half = MOST // 2
            text = "%s\n... %d characters left out ...\n%s" % (text[:half], len(text) - MOST, text[-half:])
        super().__init__(text)
