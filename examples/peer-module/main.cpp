// The module KeyLog: how often programmable keys on add-on modules were pressed.
#include <zelcore/ZELApplication.h>
#include <zelcore/ZELModule.h>

#include <QDBusAbstractAdaptor>

class KeyLogAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.velmora.Tessaro.ZELInterface")

public:
    explicit KeyLogAdaptor(QObject *module) : QDBusAbstractAdaptor(module) {}

public slots: // the methods on the bus
    int presses() const { return m_presses; }

private slots:
    void count(const ZELEvent &press)
    {
        if (press.getArgument(QStringLiteral("exists")).toBool())
            ++m_presses;
    }

private:
    int m_presses = 0;
};

class KeyLog : public ZELModule
{
public:
    using ZELModule::ZELModule;

    bool start() override
    {
        m_adaptor = new KeyLogAdaptor(this);
        return subscribeEvent(QStringLiteral("AOMKEY_PRESS_NTF"), m_adaptor, SLOT(count(ZELEvent)));
    }
};

int main(int argc, char **argv)
{
    ZELApplication application(argc, argv);
    ZELApplication::setApplicationName(QStringLiteral("KeyLog"));
    const KeyLog module(QStringLiteral("KeyLog"));
    return ZELApplication::exec();
}

#include "main.moc"
