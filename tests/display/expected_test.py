"""The expected picture against values worked out by hand, and the comparison against pictures with a fault."""
import unittest

from compare import differences
from expected import client_area, disc_weight


class Expected(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.picture = client_area()

    def pixel(self, frame, x, y):
        return self.picture.getpixel((16 + 176 * frame + x, 16 + y))

    def test_frames_stand_on_black(self):
        self.assertEqual(self.picture.size, (544, 152))
        for place in ((0, 0), (15, 16), (176, 16), (191, 80), (543, 151), (528, 20), (16, 136)):
            self.assertEqual(self.picture.getpixel(place), (0, 0, 0))

    def test_wipe(self):
        self.assertEqual(self.pixel(0, 0, 0), (80, 120, 255))  # day
        self.assertEqual(self.pixel(0, 80, 60), (30, 20, 90))  # night
        # In the ramp, 39.5032 pixels from the centre: step trunc(12.4968 * 1024 / 24 + 0.5) = 533, four to a step.
        self.assertEqual(disc_weight(119, 60), 2132)
        self.assertEqual(self.pixel(0, 119, 60), (95 + 20, 86 + 10, 93 + 46))

    def test_glow(self):
        self.assertEqual(self.pixel(1, 80, 60), (0, 0, 255))  # entry 0
        self.assertEqual(self.pixel(1, 0, 0), (250, 245, 5))  # entry 250

    def test_dissolve(self):
        self.assertEqual(self.pixel(2, 0, 0), (63, 95, 199))  # (3 * 255 + 30 + 2) >> 2 = 199
        self.assertEqual(self.pixel(2, 0, 1), (28, 45, 87))   # (254 + 3 * 31 + 2) >> 2 = 87


class Comparison(unittest.TestCase):
    def test_equal_pictures(self):
        self.assertEqual(differences(client_area(), client_area()), "")

    def test_one_step_of_one_color_of_one_pixel(self):
        want = client_area()
        for place in ((0, 0), (543, 151), (250, 70)):
            red, green, blue = want.getpixel(place)
            got = want.copy()
            got.putpixel(place, (red, green, blue ^ 1))
            self.assertIn(f"1 of 82688 pixels differ, first {place}: ", differences(got, want))

    def test_another_size(self):
        want = client_area()
        got = want.crop((0, 0, 543, 152))
        self.assertEqual(differences(got, want), "the picture is 543 x 152 pixels, not 544 x 152")


if __name__ == "__main__":
    unittest.main()
