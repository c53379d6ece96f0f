"""Tests the host beside it without hardware, on a machine that is made of models."""
import report


def test_card_in_a_box(tav_machine):
    """A card in connector 2 of a switch box has a bus below the box's."""
    tav_machine("TAV-B3 Switch Box", "TAV-C1 Adapter Card", inside="TAV1:2")
    lines = list(report.report())
    assert lines[0] == "TAV1:1 bus 03"
    assert "TAVCard1:LEFT bus 06" in lines
